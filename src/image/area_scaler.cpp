#include "image/area_scaler.h"

#include <algorithm>
#include <cstddef>
#include <vector>

#include "image/weighted_rows.h"

namespace tandrel {
namespace {

// Averages rows first: sums of whole rows run straight through memory, and what remains for the
// columns is only as many rows as the result has. Calls `emit(y, row)` with every averaged row, in
// fixed point with eight binary places.
template <typename Emit>
void eachAveragedRow(const Pixels& pixels, int height, Emit emit) {
    const AreaWeights rows(pixels.h, height);
    const int count = pixels.w * PixelBuffer::kBytesPerPixel;
    std::vector<std::uint32_t> sums(static_cast<std::size_t>(count));
    std::vector<std::uint16_t> averaged(static_cast<std::size_t>(count));
    for (int y = 0; y < height; ++y) {
        std::ranges::fill(sums, 0);
        for (int k = 0; k < rows.count(y); ++k) {
            addWeighted(sums.data(), pixels.row(rows.first(y) + k), rows.weights(y)[k], count);
        }
        toFixedPoint(averaged.data(), sums.data(), count);
        emit(y, averaged.data());
    }
}

}  // namespace

PixelBuffer scaled(const Pixels& pixels, int width, int height) {
    const AreaWeights columns(pixels.w, width);
    return PixelBuffer::make(width, height, [&](std::uint8_t* out, int rowBytes) {
        eachAveragedRow(pixels, height, [&](int y, const std::uint16_t* row) {
            averageColumns(out + static_cast<std::ptrdiff_t>(y) * rowBytes, row, columns, width);
        });
    });
}

Bytes greyThumbnail(const Pixels& pixels, int width, int height) {
    const AreaWeights columns(pixels.w, width);
    std::vector<std::uint16_t> grey(static_cast<std::size_t>(pixels.w));
    Bytes out(static_cast<std::size_t>(width) * static_cast<std::size_t>(height));
    eachAveragedRow(pixels, height, [&](int y, const std::uint16_t* row) {
        toGrey(grey.data(), row, pixels.w);
        averageGreyColumns(out.data() + static_cast<std::ptrdiff_t>(y) * width, grey.data(),
                           columns, width);
    });
    return out;
}

}  // namespace tandrel
