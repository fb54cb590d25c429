#include "reading/line_joiner.h"

#include <algorithm>

namespace tandrel {

namespace {

constexpr int kBucketRows = 16;
// No two parts of a line are further apart.
constexpr int kWidestGap = 70;

// A point, or a comma, which hangs below the line, at the foot of a letter.
bool isFootMark(const PixelBox& mark, const PixelBox& letter) {
    return mark.height() * 2 < letter.height() && mark.width() * 3 < letter.height() &&
           mark.top < letter.bottom && (mark.bottom - letter.top) * 8 >= letter.height() * 7;
}

// A minus or a dash at half the height of a letter, however thin.
bool isMinus(const PixelBox& mark, const PixelBox& letter) {
    const int middle = (mark.top + mark.bottom) * 50 - letter.top * 100;
    return mark.width() >= 2 * mark.height() && mark.width() * 5 >= letter.height() &&
           mark.width() < letter.height() && middle >= 35 * letter.height() &&
           middle <= 75 * letter.height();
}

// Whether two parts, the left one first, may be neighbours on one line of text.
bool onOneLine(const PixelBox& a, const PixelBox& b) {
    const int smaller = std::min(a.height(), b.height()), taller = std::max(a.height(), b.height());
    const PixelBox& low = a.height() < b.height() ? a : b;
    const PixelBox& tall = a.height() < b.height() ? b : a;
    const bool isMark = isFootMark(low, tall);
    if (!isMark && sharedRows(a, b) * 2 < smaller) return false;
    // No mark of a large letter is as small.
    if (taller > 24 && smaller * 10 < taller && !isMinus(low, tall)) return false;
    const bool isDash = low.height() * 10 <= tall.height() * 3;
    const bool isWord = low.width() * 2 > low.height() * 3 && !isDash;
    if (taller > 24 && smaller * 100 < taller * 45 && isWord && tall.width() > 10) return false;
    const bool tallIsSquare =
        tall.width() * 10 < tall.height() * 14 && tall.width() * 10 > tall.height() * 7;
    if (taller >= 18 && smaller * 100 < taller * 62 && isWord && tallIsSquare) return false;
    const int gap = -sharedColumns(a, b);
    if (taller > 36) {
        const int reach = isMark ? taller * 3 : std::max(50, smaller * 8);
        return gap * 10 <= std::min(taller * 65 / 10, reach);
    }
    return gap <= std::max(5, taller * 70 / 100);
}

}  // namespace

std::vector<JoinedLine> joinIntoLines(std::vector<PixelBox> parts, int rows) {
    std::ranges::sort(parts, {}, &PixelBox::left);
    JoinedGroups groups(static_cast<int>(parts.size()));
    std::vector<std::vector<int>> buckets(static_cast<std::size_t>(rows / kBucketRows) + 2);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        for (int b = parts[i].top / kBucketRows; b <= parts[i].bottom / kBucketRows; ++b) {
            buckets[b].push_back(static_cast<int>(i));
        }
    }
    for (const auto& bucket : buckets) {
        for (std::size_t i = 0; i < bucket.size(); ++i) {
            const PixelBox& a = parts[bucket[i]];
            for (std::size_t j = i + 1; j < bucket.size(); ++j) {
                const PixelBox& b = parts[bucket[j]];
                if (b.left - a.right > kWidestGap) break;
                if (onOneLine(a, b)) groups.join(bucket[i], bucket[j]);
            }
        }
    }
    std::vector<JoinedLine> lines;
    std::vector<int> indexOf(parts.size(), -1);
    for (std::size_t i = 0; i < parts.size(); ++i) {
        int& index = indexOf[groups.groupOf(static_cast<int>(i))];
        if (index < 0) {
            index = static_cast<int>(lines.size());
            lines.push_back({parts[i], {}});
        }
        lines[index].box.include(parts[i]);
        lines[index].parts.push_back(parts[i]);
    }
    return lines;
}

}  // namespace tandrel
