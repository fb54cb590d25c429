#pragma once

#include <cstdint>
#include <vector>

#include "base/pixel_buffer.h"
#include "reading/ink.h"

namespace tandrel {

// 128 bits over bytes, mixed with secrets drawn at program start, so that nobody can make two
// pictures that are taken for one.
struct RowSum {
    std::uint64_t first = 0;
    std::uint64_t second = 0;

    bool operator==(const RowSum&) const = default;
};

// The sum of each row's pixels.
std::vector<RowSum> rowSumsOf(const PixelBuffer& image);

// What tells the pictures of lines apart: their size and two sums over all pixels.
struct PictureHash {
    int width = 0;
    int height = 0;
    std::uint64_t first = 0;
    std::uint64_t second = 0;

    bool operator==(const PictureHash&) const = default;
};

// Of the pixels in the ink's box; where on the frame it lies does not count.
PictureHash hashOf(const GrayFrame& frame, const Ink& ink);

}  // namespace tandrel
