#include "image/window_thumbnail.h"

#include <algorithm>
#include <cstdlib>

namespace tandrel {
namespace {

constexpr int kSmallestChange = 19;  // grey levels
constexpr int kFewestChangedCells = 2;

// The source line at the centre of cell `cell` of `cells`.
int centre(int cell, int cells, int length) {
    return std::min(cell * length / cells + length / (2 * cells), length - 1);
}

}  // namespace

WindowThumbnail windowThumbnail(const Pixels& pixels) {
    std::array<int, kWindowThumbnailWidth> columns{};
    for (int c = 0; c < kWindowThumbnailWidth; ++c) {
        columns[static_cast<std::size_t>(c)] = centre(c, kWindowThumbnailWidth, pixels.w);
    }
    WindowThumbnail thumbnail;
    auto out = thumbnail.begin();
    for (int r = 0; r < kWindowThumbnailHeight; ++r) {
        const int y = centre(r, kWindowThumbnailHeight, pixels.h);
        for (const int x : columns) *out++ = static_cast<std::uint8_t>(pixels.luma(x, y));
    }
    return thumbnail;
}

bool differ(const WindowThumbnail& a, const WindowThumbnail& b) {
    int changed = 0;
    for (std::size_t i = 0; i < a.size(); ++i) changed += std::abs(a[i] - b[i]) >= kSmallestChange;
    return changed >= kFewestChangedCells;
}

}  // namespace tandrel
