#pragma once

#include <vector>

#include "base/json.h"
#include "platform/text_recognizer.h"

namespace tandrel {

// What `recognizer` reads on the image, in reading order: records by y, equal y by x, else as they
// came. An error means that nothing is known about the image's text. Slow, on the caller's thread;
// never to be called where frames are delivered.
Result<ReadText> readText(TextRecognizer& recognizer, const PixelBuffer& image);

// The records alone, none when reading failed: for those who only show what was read. Who decides
// by the text takes `readText`, where an error is not an empty screen.
std::vector<TextRecord> recognize(TextRecognizer& recognizer, const PixelBuffer& image);

// {"text", "conf", "x", "y", "w", "h"}, the box in whole image pixels from the top left.
Json toJson(const TextRecord& record);
Json toJson(const std::vector<TextRecord>& records);

}  // namespace tandrel
