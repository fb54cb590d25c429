#include "reading/strip.h"

#include <array>
#include <cmath>

namespace tandrel {

namespace {

// How the destination samples the source along one axis: for each destination pixel a range of
// source pixels with a weight for the first, the inner and the last ones.
struct Span {
    int first = 0;
    int end = 0;
    float firstWeight = 0;
    float lastWeight = 0;
};

// The source range [start, start + scale), clipped to 0..limit. Enlarging repeats pixels, since the
// network was trained on crisp edges.
Span spanAt(double start, double scale, int limit) {
    if (scale < 1) {
        const int nearest = static_cast<int>(std::floor(start + scale / 2));
        if (nearest < 0 || nearest >= limit) return {};
        return {nearest, nearest + 1, 1, 1};
    }
    const double from = std::max(0.0, start), to = std::min<double>(limit, start + scale);
    if (to <= from) return {};
    Span span;
    span.first = static_cast<int>(from);
    span.end = std::min(limit, static_cast<int>(std::ceil(to)));
    span.firstWeight = static_cast<float>(std::min<double>(to, span.first + 1) - from);
    span.lastWeight = static_cast<float>(to - std::max<double>(from, span.end - 1));
    return span;
}

float weightAt(const Span& span, int at) {
    if (at == span.first) return span.firstWeight;
    return at == span.end - 1 ? span.lastWeight : 1;
}

}  // namespace

Strip makeStrip(const GrayFrame& frame, const Ink& ink, double padding) {
    const int width = ink.box.width(), height = ink.box.height();
    const double scale = height * (1 + 2 * padding) / Strip::kRows;
    const double top = -height * padding;
    Strip strip;
    strip.columns = static_cast<int>(std::lround(width / scale)) + 2 * Strip::kSideMargin;
    strip.pixels.assign(static_cast<std::size_t>(strip.columns) * Strip::kRows, 255);

    // How dark a grey level is: 0 for paper, 255 for full ink.
    std::array<float, 256> darkness{};
    for (int v = 0; v < 256; ++v) {
        const float part =
            static_cast<float>(v - ink.paper) / static_cast<float>(ink.level - ink.paper);
        darkness[v] = 255 * std::clamp(part, 0.0f, 1.0f);
    }
    std::vector<Span> across;
    for (int x = 0; x < strip.columns - 2 * Strip::kSideMargin; ++x) {
        across.push_back(spanAt(x * scale, scale, width));
    }
    std::vector<float> sums(static_cast<std::size_t>(width));
    const auto area = static_cast<float>(scale < 1 ? 1 : scale * scale);
    for (int y = 0; y < Strip::kRows; ++y) {
        const Span down = spanAt(top + y * scale, scale, height);
        if (down.end <= down.first) continue;
        std::fill(sums.begin(), sums.end(), 0.0f);
        for (int row = down.first; row < down.end; ++row) {
            const std::uint8_t* pixels = frame.row(ink.box.top + row) + ink.box.left;
            const float weight = weightAt(down, row);
            for (int x = 0; x < width; ++x) sums[x] += weight * darkness[pixels[x]];
        }
        std::uint8_t* to = strip.row(y) + Strip::kSideMargin;
        for (const Span& span : across) {
            float sum = 0;
            for (int x = span.first; x < span.end; ++x) sum += weightAt(span, x) * sums[x];
            *to++ = static_cast<std::uint8_t>(std::clamp(255.5f - sum / area, 0.0f, 255.0f));
        }
    }
    return strip;
}

void sharpen(Strip& strip, float amount) {
    if (amount <= 0) return;
    const Strip before = strip;
    for (int y = 1; y + 1 < Strip::kRows; ++y) {
        std::uint8_t* to = strip.row(y);
        for (int x = 1; x + 1 < strip.columns; ++x) {
            int sum = 0;
            for (int line = y - 1; line <= y + 1; ++line) {
                const std::uint8_t* row = before.row(line) + x;
                sum += row[-1] + row[0] + row[1];
            }
            const auto value = static_cast<float>(to[x]);
            const float sharper = value + amount * (value - static_cast<float>(sum) / 9);
            to[x] = static_cast<std::uint8_t>(std::clamp(sharper, 0.0f, 255.0f));
        }
    }
}

}  // namespace tandrel
