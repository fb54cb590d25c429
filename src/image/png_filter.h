#pragma once

#include <cstdint>

namespace tandrel {

// Writes one filtered scanline of an RGB picture (PNG, section 9): the filter type, then three
// bytes a pixel. `row` and `above` are blue, green, red, ignored; `above` is null for the first
// row. Of "sub" (the pixel to the left is subtracted) and "up" (the pixel above is), the row gets
// the one whose differences are smaller in sum, the usual guess at what compresses better. `out`
// has room for 4 + 3 * width bytes, of which 1 + 3 * width count.
void filterRow(std::uint8_t* out, const std::uint8_t* row, const std::uint8_t* above, int width);

}  // namespace tandrel
