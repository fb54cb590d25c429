#pragma once

#include <cstdint>
#include <vector>

#include "reading/gray_frame.h"

namespace tandrel {

// The frame in square cells of about one point, each marked if the brightness varies strongly in it
// and its right, lower and diagonal neighbours. Glyphs become blobs, flat areas stay empty.
struct ContrastCells {
    int cellPixels = 0;
    int columns = 0;
    int rows = 0;
    std::vector<std::uint8_t> marked;  // 0 or 1

    const std::uint8_t* row(int y) const { return &marked[static_cast<std::size_t>(y) * columns]; }
};

ContrastCells markContrast(const GrayFrame& frame);

}  // namespace tandrel
