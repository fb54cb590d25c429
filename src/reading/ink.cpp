#include "reading/ink.h"

#include <array>
#include <cstdlib>

namespace tandrel {

namespace {

constexpr int kLeastContrast = 20;
constexpr int kLeastInkRows = 4;
using Histogram = std::array<int, 256>;

Histogram histogramOf(const GrayFrame& frame, const PixelBox& box, int& count) {
    Histogram histogram{};
    count = 0;
    for (int y = box.top; y < box.bottom; ++y) {
        const std::uint8_t* row = frame.row(y);
        for (int x = box.left; x < box.right; x += 2, ++count) ++histogram[row[x]];
    }
    return histogram;
}

// The most frequent brightness along the border of the box: what the text stands on.
int paperLevel(const GrayFrame& frame, const PixelBox& box, const Histogram& histogram) {
    constexpr int kStep = 8;
    std::array<int, 256 / kStep> border{};
    for (int x = box.left; x < box.right; ++x) {
        ++border[frame.row(box.top)[x] / kStep];
        ++border[frame.row(box.bottom - 1)[x] / kStep];
    }
    for (int y = box.top; y < box.bottom; ++y) {
        ++border[frame.row(y)[box.left] / kStep];
        ++border[frame.row(y)[box.right - 1] / kStep];
    }
    const auto most = std::max_element(border.begin(), border.end()) - border.begin();
    const int centre = static_cast<int>(most) * kStep;
    int count = 0, sum = 0;
    for (int v = std::max(0, centre - kStep); v < std::min(256, centre + 2 * kStep); ++v) {
        count += histogram[v];
        sum += histogram[v] * v;
    }
    return count ? sum / count : centre + kStep / 2;
}

}  // namespace

std::optional<Ink> findInk(const GrayFrame& frame, const PixelBox& box) {
    if (box.empty()) return std::nullopt;
    int count = 0;
    const Histogram histogram = histogramOf(frame, box, count);
    Ink ink;
    ink.paper = paperLevel(frame, box, histogram);
    int low = 0, high = 255;
    for (int seen = histogram[0]; low < 255 && seen < count / 100;) seen += histogram[++low];
    for (int seen = histogram[255]; high > 0 && seen < count / 100;) seen += histogram[--high];
    const bool bright = high - ink.paper > ink.paper - low;
    ink.level = bright ? high : low;
    if (std::abs(ink.level - ink.paper) < kLeastContrast) return std::nullopt;

    const int threshold = ink.paper + (ink.level - ink.paper) * 45 / 100;
    PixelBox tight{box.right, box.bottom, box.left, box.top};
    for (int y = box.top; y < box.bottom; ++y) {
        const std::uint8_t* row = frame.row(y);
        for (int x = box.left; x < box.right; ++x) {
            if (bright ? row[x] > threshold : row[x] < threshold)
                tight.include({x, y, x + 1, y + 1});
        }
    }
    if (tight.empty() || tight.height() < kLeastInkRows) return std::nullopt;
    ink.box = tight;
    return ink;
}

}  // namespace tandrel
