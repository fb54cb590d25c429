#pragma once

#include <cstdint>

#include "base/pixel_buffer.h"
#include "reading/ink.h"

namespace tandrel {

// What tells pictures apart: their size and two sums over all pixels that mix differently, with
// secrets drawn at program start, so that nobody can make two pictures that are taken for one.
struct PictureHash {
    int width = 0;
    int height = 0;
    std::uint64_t first = 0;
    std::uint64_t second = 0;

    bool operator==(const PictureHash&) const = default;
};

PictureHash hashOf(const PixelBuffer& image);
// Of the pixels in the ink's box; where on the frame it lies does not count.
PictureHash hashOf(const GrayFrame& frame, const Ink& ink);

}  // namespace tandrel
