#include "reading/contrast_cells.h"

#include <algorithm>

namespace tandrel {

namespace {

// From these widths on a phone's screen has three or two pixels a point, below them one.
constexpr int kTripleDensityWidth = 1000;
constexpr int kDoubleDensityWidth = 500;

int pixelsPerPoint(int width) {
    if (width >= kTripleDensityWidth) return 3;
    return width >= kDoubleDensityWidth ? 2 : 1;
}

// The smallest and largest of each `kSize` neighbours.
template <int kSize>
void reduce(const std::uint8_t* low, const std::uint8_t* high, int count, std::uint8_t* darkest,
            std::uint8_t* brightest) {
    for (int x = 0; x < count; ++x, low += kSize, high += kSize) {
        std::uint8_t least = low[0], most = high[0];
        for (int i = 1; i < kSize; ++i) {
            least = std::min(least, low[i]);
            most = std::max(most, high[i]);
        }
        darkest[x] = least;
        brightest[x] = most;
    }
}

}  // namespace

ContrastCells::ContrastCells(int width, int height)
    : cellPixels_(pixelsPerPoint(width)),
      columns_(width / cellPixels_),
      rows_(height / cellPixels_),
      darkest_(at(rows_)),
      brightest_(at(rows_)),
      marked_(at(rows_)),
      low_(static_cast<std::size_t>(columns_) * cellPixels_),
      high_(low_.size()) {}

void ContrastCells::update(const GrayFrame& frame, const ChangedRows& changed) {
    auto isChanged = [&](int row) {
        return row < rows_ && changed.any(row * cellPixels_, (row + 1) * cellPixels_);
    };
    for (int row = 0; row < rows_; ++row) {
        if (isChanged(row)) measureRow(frame, row);
    }
    for (int row = 0; row + 1 < rows_; ++row) {
        if (isChanged(row) || isChanged(row + 1)) markRow(row);
    }
}

void ContrastCells::measureRow(const GrayFrame& frame, int row) {
    std::ranges::fill(low_, std::uint8_t{255});
    std::ranges::fill(high_, std::uint8_t{0});
    const int width = columns_ * cellPixels_;
    std::uint8_t* low = low_.data();
    std::uint8_t* high = high_.data();
    for (int line = 0; line < cellPixels_; ++line) {
        const std::uint8_t* pixels = frame.row(row * cellPixels_ + line);
        for (int x = 0; x < width; ++x) {
            low[x] = std::min(low[x], pixels[x]);
            high[x] = std::max(high[x], pixels[x]);
        }
    }
    std::uint8_t* darkest = darkest_.data() + at(row);
    std::uint8_t* brightest = brightest_.data() + at(row);
    switch (cellPixels_) {
        case 1:
            return reduce<1>(low, high, columns_, darkest, brightest);
        case 2:
            return reduce<2>(low, high, columns_, darkest, brightest);
        default:
            return reduce<3>(low, high, columns_, darkest, brightest);
    }
}

void ContrastCells::markRow(int row) {
    const std::uint8_t* low = darkest_.data() + at(row);
    const std::uint8_t* lowBelow = darkest_.data() + at(row + 1);
    const std::uint8_t* high = brightest_.data() + at(row);
    const std::uint8_t* highBelow = brightest_.data() + at(row + 1);
    for (int x = 0; x < columns_; ++x) {
        low_[x] = std::min(low[x], lowBelow[x]);
        high_[x] = std::max(high[x], highBelow[x]);
    }
    std::uint8_t* marked = marked_.data() + at(row);
    const std::uint8_t* least = low_.data();
    const std::uint8_t* most = high_.data();
    for (int x = 0; x + 1 < columns_; ++x) {
        const int darkest = std::min(least[x], least[x + 1]);
        const int brightest = std::max(most[x], most[x + 1]);
        marked[x] = brightest - darkest >= kEdgeContrast;
    }
}

}  // namespace tandrel
