#include "reading/local_contrast.h"

#include <algorithm>
#include <cstring>

namespace tandrel {

namespace {

enum class Extreme { kMost, kLeast };

std::uint8_t extreme(std::uint8_t a, std::uint8_t b, Extreme which) {
    return which == Extreme::kMost ? std::max(a, b) : std::min(a, b);
}

template <Extreme kWhich>
void combine(std::uint8_t* to, const std::uint8_t* other, std::size_t count) {
    for (std::size_t i = 0; i < count; ++i) to[i] = extreme(to[i], other[i], kWhich);
}

// Each element becomes the extreme of itself and the window - 1 after it, `step` bytes apart:
// windows of twice the size are made of two smaller ones. `count` bytes are given, and that many
// less the window are right afterwards.
template <Extreme kWhich>
void slide(std::uint8_t* bytes, std::size_t count, std::size_t step, int window) {
    int size = 1;
    for (; size * 2 <= window; size *= 2) {
        combine<kWhich>(bytes, bytes + size * step, count - size * step);
    }
    if (size < window) {
        const std::size_t rest = static_cast<std::size_t>(window - size) * step;
        combine<kWhich>(bytes, bytes + rest, count - rest);
    }
}

// The extreme of the square around each pixel; what lies outside of the picture does not count.
template <Extreme kWhich>
void filter(std::vector<std::uint8_t>& values, int columns, int rows, int reach) {
    constexpr std::uint8_t kOutside = kWhich == Extreme::kMost ? 0 : 255;
    const int window = 2 * reach + 1;
    const auto width = static_cast<std::size_t>(columns);
    std::vector<std::uint8_t> row(width + 2 * static_cast<std::size_t>(reach));
    for (int y = 0; y < rows; ++y) {
        std::uint8_t* at = values.data() + y * width;
        std::ranges::fill(row, kOutside);
        std::memcpy(row.data() + reach, at, width);
        slide<kWhich>(row.data(), row.size(), 1, window);
        std::memcpy(at, row.data(), width);
    }
    const std::size_t margin = reach * width;
    std::vector<std::uint8_t> padded(values.size() + 2 * margin, kOutside);
    std::memcpy(padded.data() + margin, values.data(), values.size());
    slide<kWhich>(padded.data(), padded.size(), width, window);
    std::memcpy(values.data(), padded.data(), values.size());
}

}  // namespace

LocalContrast localContrast(const GrayFrame& frame, const PixelBox& area, InkLevel level,
                            int pixels, int reach) {
    LocalContrast contrast{area.width() / pixels, area.height() / pixels, {}};
    // With bright ink turned dark, the ink is what a closing fills.
    const std::uint8_t turned = level == InkLevel::kBright ? 255 : 0;
    std::vector<std::uint8_t> picture;
    picture.reserve(static_cast<std::size_t>(contrast.columns) * contrast.rows);
    for (int y = 0; y < contrast.rows; ++y) {
        const std::uint8_t* row = frame.row(area.top + y * pixels) + area.left;
        for (int x = 0; x < contrast.columns; ++x) picture.push_back(row[x * pixels] ^ turned);
    }
    contrast.values = picture;
    filter<Extreme::kMost>(contrast.values, contrast.columns, contrast.rows, reach);
    filter<Extreme::kLeast>(contrast.values, contrast.columns, contrast.rows, reach);
    for (std::size_t i = 0; i < picture.size(); ++i) contrast.values[i] -= picture[i];
    return contrast;
}

}  // namespace tandrel
