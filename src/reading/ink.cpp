#include "reading/ink.h"

#include <algorithm>
#include <array>
#include <cstdlib>
#include <iterator>

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

// From this part of the way from paper to ink on a pixel counts as ink.
constexpr int kInkPercent = 45;
constexpr int kPlatePercent = 56;
constexpr int kDiscPercent = 66;
constexpr int kLeastDisc = 14;  // pixels; smaller letters are blurred to more

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

// Paper and ink of the text in `box`, whose paper is known; none if they hardly differ.
std::optional<Ink> inkOn(int paper, const Histogram& histogram, int count, const PixelBox& box) {
    // The outermost hundredth does not count, but at least one pixel has the level.
    const int enough = std::max(1, count / 100);
    int low = 0, high = 255;
    for (int seen = histogram[0]; low < 255 && seen < enough;) seen += histogram[++low];
    for (int seen = histogram[255]; high > 0 && seen < enough;) seen += histogram[--high];
    const int level = high - paper > paper - low ? high : low;
    if (std::abs(level - paper) < kLeastContrast) return std::nullopt;
    return Ink{box, paper, level};
}

// The smallest box around the ink; `inked` gets the number of its pixels.
PixelBox tightBox(const GrayFrame& frame, const Ink& ink, int& inked) {
    const auto mask = inkMask(frame, ink);
    const int width = ink.box.width();
    PixelBox tight{ink.box.right, ink.box.bottom, ink.box.left, ink.box.top};
    inked = 0;
    for (int y = 0; y < ink.box.height(); ++y) {
        const std::uint8_t* row = mask.data() + std::ptrdiff_t{y} * width;
        const auto* first = std::find(row, row + width, 1);
        if (first == row + width) continue;
        const auto last =
            std::find(std::reverse_iterator(row + width), std::reverse_iterator(row), 1);
        tight.include({ink.box.left + static_cast<int>(first - row), ink.box.top + y,
                       ink.box.left + static_cast<int>(last.base() - row), ink.box.top + y + 1});
        inked += static_cast<int>(std::count(first, last.base(), 1));
    }
    return tight;
}

// Text covers less of its box than this; what covers more is a plate that text stands on, or an
// icon. Single letters, which are about as wide as high, cover more than words do.
bool isPlate(const PixelBox& box, int inked) {
    const int covered = inked * 100, area = box.width() * box.height();
    if (5 * box.width() > 6 * box.height()) return covered > area * kPlatePercent;
    return 6 * box.width() > 5 * box.height() && box.height() >= kLeastDisc &&
           covered > area * kDiscPercent;
}

}  // namespace

bool standsFree(const GrayFrame& frame, const Ink& ink) {
    constexpr double kMargin = 0.35;  // of the ink's height; no letters are further apart
    constexpr double kTail = 0.15;    // by which a comma hangs below
    const PixelBox& box = ink.box;
    const int margin = std::max(3, static_cast<int>(kMargin * box.height()));
    const int bottom =
        std::min(frame.height(), box.bottom + static_cast<int>(kTail * box.height()));
    // The pixel at the box may belong to a letter's blurred edge.
    const int left = box.left - margin, right = box.right + margin;
    if (left < 0 || right > frame.width()) return false;
    auto isPaper = [&](std::uint8_t pixel) {
        return std::abs(pixel - ink.paper) * 2 < std::abs(ink.level - ink.paper);
    };
    for (int y = box.top; y < bottom; ++y) {
        const std::uint8_t* row = frame.row(y);
        if (!std::all_of(row + left, row + box.left - 1, isPaper)) return false;
        if (!std::all_of(row + box.right + 1, row + right, isPaper)) return false;
    }
    return true;
}

std::vector<std::uint8_t> inkMask(const GrayFrame& frame, const Ink& ink) {
    const int width = ink.box.width();
    const int threshold = ink.paper + (ink.level - ink.paper) * kInkPercent / 100;
    const bool bright = ink.level > ink.paper;
    std::vector<std::uint8_t> mask(static_cast<std::size_t>(width) * ink.box.height());
    std::uint8_t* to = mask.data();
    for (int y = ink.box.top; y < ink.box.bottom; ++y, to += width) {
        const std::uint8_t* row = frame.row(y) + ink.box.left;
        if (bright) {
            for (int x = 0; x < width; ++x) to[x] = row[x] > threshold;
        } else {
            for (int x = 0; x < width; ++x) to[x] = row[x] < threshold;
        }
    }
    return mask;
}

std::optional<Ink> findInkOnPlate(const GrayFrame& frame, const PixelBox& plate) {
    // Round corners stay outside of a box that is this much smaller.
    const int inset = std::max(1, plate.height() / 7);
    const int side = std::max(1, plate.height() / 4);
    const PixelBox inner{plate.left + side, plate.top + inset, plate.right - side,
                         plate.bottom - inset};
    if (inner.empty()) return std::nullopt;
    int count = 0, inked = 0;
    const Histogram histogram = histogramOf(frame, inner, count);
    const auto paper = std::ranges::max_element(histogram) - histogram.begin();
    auto ink = inkOn(static_cast<int>(paper), histogram, count, inner);
    if (!ink) return std::nullopt;
    ink->box = tightBox(frame, *ink, inked);
    if (ink->box.empty() || ink->box.height() < kLeastInkRows) return std::nullopt;
    return ink;
}

std::optional<Ink> findInk(const GrayFrame& frame, const PixelBox& box) {
    if (box.empty()) return std::nullopt;
    int count = 0, inked = 0;
    const Histogram histogram = histogramOf(frame, box, count);
    auto ink = inkOn(paperLevel(frame, box, histogram), histogram, count, box);
    if (!ink) return std::nullopt;
    const PixelBox tight = tightBox(frame, *ink, inked);
    if (tight.empty()) return std::nullopt;
    if (isPlate(tight, inked)) return findInkOnPlate(frame, tight);
    if (tight.height() < kLeastInkRows) return std::nullopt;
    ink->box = tight;
    return ink;
}

}  // namespace tandrel
