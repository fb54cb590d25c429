#pragma once

#include <optional>

#include "base/bytes.h"
#include "image/pixels.h"

namespace tandrel {

// The picture as a baseline JPEG of `quality` 1 to 100; the fourth byte is left out. None when the
// picture is empty or the encoder fails. Any thread.
std::optional<Bytes> encodeJpeg(const Pixels& pixels, int quality);

}  // namespace tandrel
