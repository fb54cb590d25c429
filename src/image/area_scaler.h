#pragma once

#include "base/bytes.h"
#include "base/pixel_buffer.h"
#include "image/pixels.h"

namespace tandrel {

// The picture drawn to exactly `width` x `height` pixels (each 1 to PixelBuffer::kLargestSide), the
// two directions scaled on their own. Every output pixel is the average of the area it covers, so
// no detail falls between samples, however small the result. The picture is not empty. Any thread.
PixelBuffer scaled(const Pixels& pixels, int width, int height);

// The same as brightness: width * height bytes, row by row, 0 black to 255 white. The first byte of
// a pixel is taken as blue.
Bytes greyThumbnail(const Pixels& pixels, int width, int height);

}  // namespace tandrel
