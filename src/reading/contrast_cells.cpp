#include "reading/contrast_cells.h"

#include <algorithm>

namespace tandrel {

namespace {

// Grey levels between ink and background from which on an edge counts.
constexpr int kEdgeContrast = 30;
// From these widths on a phone's screen has three or two pixels a point, below them one.
constexpr int kTripleDensityWidth = 1000;
constexpr int kDoubleDensityWidth = 500;

int pixelsPerPoint(int width) {
    if (width >= kTripleDensityWidth) return 3;
    return width >= kDoubleDensityWidth ? 2 : 1;
}

struct Extremes {
    std::vector<std::uint8_t> low;
    std::vector<std::uint8_t> high;
};

// The darkest and brightest pixel of every cell.
Extremes cellExtremes(const GrayFrame& frame, const ContrastCells& cells) {
    const std::size_t count = static_cast<std::size_t>(cells.columns) * cells.rows;
    Extremes result{std::vector<std::uint8_t>(count), std::vector<std::uint8_t>(count)};
    const int width = cells.columns * cells.cellPixels;
    std::vector<std::uint8_t> low(width), high(width);
    for (int y = 0; y < cells.rows; ++y) {
        std::fill(low.begin(), low.end(), 255);
        std::fill(high.begin(), high.end(), 0);
        for (int line = 0; line < cells.cellPixels; ++line) {
            const std::uint8_t* pixels = frame.row(y * cells.cellPixels + line);
            for (int x = 0; x < width; ++x) {
                low[x] = std::min(low[x], pixels[x]);
                high[x] = std::max(high[x], pixels[x]);
            }
        }
        for (int x = 0; x < cells.columns; ++x) {
            const auto first = static_cast<std::ptrdiff_t>(x) * cells.cellPixels;
            const std::size_t cell = static_cast<std::size_t>(y) * cells.columns + x;
            result.low[cell] =
                *std::min_element(low.begin() + first, low.begin() + first + cells.cellPixels);
            result.high[cell] =
                *std::max_element(high.begin() + first, high.begin() + first + cells.cellPixels);
        }
    }
    return result;
}

}  // namespace

ContrastCells markContrast(const GrayFrame& frame) {
    ContrastCells cells;
    cells.cellPixels = pixelsPerPoint(frame.width());
    cells.columns = frame.width() / cells.cellPixels;
    cells.rows = frame.height() / cells.cellPixels;
    cells.marked.assign(static_cast<std::size_t>(cells.columns) * cells.rows, 0);
    const Extremes extremes = cellExtremes(frame, cells);
    for (int y = 0; y + 1 < cells.rows; ++y) {
        for (int x = 0; x + 1 < cells.columns; ++x) {
            const std::size_t at = static_cast<std::size_t>(y) * cells.columns + x;
            const std::size_t below = at + cells.columns;
            const auto& low = extremes.low;
            const auto& high = extremes.high;
            const int darkest = std::min({low[at], low[at + 1], low[below], low[below + 1]});
            const int brightest = std::max({high[at], high[at + 1], high[below], high[below + 1]});
            cells.marked[at] = brightest - darkest >= kEdgeContrast;
        }
    }
    return cells;
}

}  // namespace tandrel
