#pragma once

#include <functional>
#include <string>
#include <vector>

#include "devices/device.h"
#include "engine/screen_reader.h"
#include "http/message.h"

namespace tandrel {

// "maxWidth", "maxEdge" and "format" of a picture request. The error names a number that is not a
// whole number from 1.
Result<SnapshotOptions> parseSnapshotOptions(const HTTPRequest& request);

// The phone's current frame as an image with its X- headers.
HTTPResponse screenshot(const Device& device, const SnapshotOptions& options);

// The same with the text on it, as JSON. `saw` is handed the texts that were read.
HTTPResponse look(const Device& device, const SnapshotOptions& options, ScreenReader& reader,
                  const std::function<void(const std::vector<std::string>&)>& saw);

}  // namespace tandrel
