#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace tandrel {

// Turns rows of pixels into the filtered scanlines of an RGB picture (PNG, section 9).
class RowFilter {
 public:
    explicit RowFilter(int width)
        : width_(width), differences_(4 * static_cast<std::size_t>(width)) {}

    // Written beyond a scanline's end; what comes next overwrites it.
    static constexpr std::size_t kOverrun = 4;

    // The bytes of one scanline: the filter type, then three bytes a pixel.
    std::size_t lineBytes() const { return 1 + 3 * static_cast<std::size_t>(width_); }

    // `row` and `above` are blue, green, red, ignored; `above` is null for the first row. A row
    // like the one above becomes zeros. Flat rows, as interfaces have, go unfiltered: their runs
    // and repeated letters compress better than differences do. Others get "sub" (the pixel to the
    // left is subtracted) or "up" (the pixel above is), whichever differences are smaller in sum.
    // Rows are given from the top to the bottom, since a choice holds for the few rows below as
    // well.
    void write(std::uint8_t* out, const std::uint8_t* row, const std::uint8_t* above);

 private:
    enum class Filter : std::uint8_t { none = 0, sub = 1, up = 2 };  // by their numbers in the file

    Filter bestFor(const std::uint8_t* row, const std::uint8_t* above) const;

    const int width_;
    std::vector<std::uint8_t> differences_;
    Filter filter_ = Filter::none;
    int rowsUntilChoice_ = 0;
};

}  // namespace tandrel
