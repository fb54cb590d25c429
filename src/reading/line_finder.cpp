#include "reading/line_finder.h"

#include "reading/components.h"
#include "reading/contrast_cells.h"

namespace tandrel {

namespace {

// All lengths are in cells of about one point.
constexpr int kTallestGlyph = 110;
constexpr int kShortestLine = 5;
constexpr int kBucketRows = 16;

// A rule between rows, a thin vertical line, a speck, or something too tall for a line of text.
bool isNoGlyph(const Component& part) {
    const int width = part.box.width(), height = part.box.height();
    if (height <= 3 && width > (height <= 2 ? 16 : 26)) return true;
    if (width <= 2 && height > 24) return true;
    return height > kTallestGlyph || part.area < 4;
}

// The frame of a card, field or button: large, drawn with a thin stroke, empty in the middle.
// Letters of that size have thicker strokes or something in the middle.
bool isOutline(const Component& part) {
    const int width = part.box.width(), height = part.box.height();
    if (width < 20 || height < 18 || part.area * 3 >= width * height) return false;
    const bool isThin = part.area * 10 < 2 * (width + height) * 38;
    return isThin && part.centre * 200 <= width * height;
}

bool onOneLine(const PixelBox& a, const PixelBox& b) {
    const int smaller = std::min(a.height(), b.height()), taller = std::max(a.height(), b.height());
    if (sharedRows(a, b) * 2 < smaller) return false;
    const PixelBox& low = a.height() < b.height() ? a : b;
    const PixelBox& tall = a.height() < b.height() ? b : a;
    const bool isDash = low.height() * 10 <= tall.height() * 3;
    const bool isWord = low.width() * 2 > low.height() * 3 && !isDash;
    if (taller > 24 && smaller * 100 < taller * 45 && isWord && tall.width() > 10) return false;
    const bool tallIsSquare =
        tall.width() * 10 < tall.height() * 14 && tall.width() * 10 > tall.height() * 7;
    if (taller >= 18 && smaller * 100 < taller * 62 && isWord && tallIsSquare) return false;
    const int gap = -sharedColumns(a, b);
    if (taller > 36) return gap * 10 <= std::min(taller * 4, std::max(50, smaller * 8));
    return gap <= std::max(5, taller * 62 / 100);
}

std::vector<PixelBox> joinIntoLines(const std::vector<Component>& parts, int rows) {
    JoinedGroups groups(static_cast<int>(parts.size()));
    std::vector<std::vector<int>> buckets(static_cast<std::size_t>(rows / kBucketRows) + 2);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        for (int b = parts[i].box.top / kBucketRows; b <= parts[i].box.bottom / kBucketRows; ++b) {
            buckets[b].push_back(static_cast<int>(i));
        }
    }
    for (const auto& bucket : buckets) {
        for (std::size_t i = 0; i < bucket.size(); ++i) {
            const PixelBox& a = parts[bucket[i]].box;
            for (std::size_t j = i + 1; j < bucket.size(); ++j) {
                const PixelBox& b = parts[bucket[j]].box;
                if (b.left - a.left > 400) break;
                if (onOneLine(a, b)) groups.join(bucket[i], bucket[j]);
            }
        }
    }
    std::vector<PixelBox> lines;
    std::vector<int> indexOf(parts.size(), -1);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        int& index = indexOf[groups.groupOf(static_cast<int>(i))];
        if (index < 0) {
            index = static_cast<int>(lines.size());
            lines.push_back(parts[i].box);
        }
        lines[index].include(parts[i].box);
    }
    return lines;
}

}  // namespace

std::vector<PixelBox> findLines(const GrayFrame& frame) {
    const ContrastCells cells = markContrast(frame);
    auto parts = connectedComponents(cells.marked.data(), cells.columns, cells.rows);
    std::erase_if(parts, [](const Component& part) { return isNoGlyph(part) || isOutline(part); });
    std::sort(parts.begin(), parts.end(),
              [](const Component& a, const Component& b) { return a.box.left < b.box.left; });
    std::vector<PixelBox> lines;
    for (const PixelBox& line : joinIntoLines(parts, cells.rows)) {
        if (line.height() < kShortestLine || line.width() * 5 < line.height()) continue;
        const int scale = cells.cellPixels;
        lines.push_back({line.left * scale, line.top * scale,
                         std::min((line.right + 1) * scale, frame.width()),
                         std::min((line.bottom + 1) * scale, frame.height())});
    }
    std::sort(lines.begin(), lines.end(), [](const PixelBox& a, const PixelBox& b) {
        return a.top != b.top ? a.top < b.top : a.left < b.left;
    });
    return lines;
}

}  // namespace tandrel
