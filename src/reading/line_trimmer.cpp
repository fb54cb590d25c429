#include "reading/line_trimmer.h"

#include <algorithm>
#include <span>

#include "reading/components.h"

namespace tandrel {

namespace {

// All shares are of the height of the line's tallest letters.
constexpr double kColumnGap = 0.9;  // no space between words is as wide
constexpr double kIconGap = 0.28;   // no space between letters is as wide
constexpr double kOvershoot = 0.07;
constexpr double kFloat = 0.04;
constexpr double kSmallMark = 0.45;
constexpr double kWideIcon = 1.5;

// The line's letters from left to right; what stands above each other, such as an i and its dot,
// is one.
std::vector<PixelBox> lettersOf(const GrayFrame& frame, const Ink& line) {
    const auto mask = inkMask(frame, line);
    std::vector<PixelBox> boxes;
    for (const Component& part :
         connectedComponents(mask.data(), line.box.width(), line.box.height())) {
        boxes.push_back(part.box);
    }
    std::ranges::sort(boxes, {}, &PixelBox::left);
    std::vector<PixelBox> letters;
    for (const PixelBox& box : boxes) {
        if (!letters.empty() && sharedColumns(letters.back(), box) > 0) {
            letters.back().include(box);
        } else {
            letters.push_back(box);
        }
    }
    return letters;
}

struct Metrics {
    int top = 0;
    int baseline = 0;
    double height = 0;
};

// Where the letters stand: the middle one of their lower edges, since most have no descender, and
// the upper edge of the tallest but one, if there are so many.
Metrics metricsOf(std::span<const PixelBox> letters) {
    std::vector<int> tops, bottoms;
    for (const PixelBox& letter : letters) {
        tops.push_back(letter.top);
        bottoms.push_back(letter.bottom);
    }
    std::ranges::sort(tops);
    std::ranges::sort(bottoms);
    Metrics metrics;
    metrics.baseline = bottoms[bottoms.size() / 2];
    metrics.top = tops[tops.size() > 3 ? 1 : 0];
    metrics.height = std::max(1, metrics.baseline - metrics.top);
    return metrics;
}

// Whether a letter that stands apart at an end of the line is none.
bool isIcon(const PixelBox& letter, int gap, std::span<const PixelBox> others) {
    const Metrics metrics = metricsOf(others);
    const double height = metrics.height;
    if (gap < kIconGap * height) return false;
    if (letter.width() > kWideIcon * height) return true;
    const double above = metrics.top - letter.top, below = letter.bottom - metrics.baseline;
    if (above > kOvershoot * height && below > kOvershoot * height) return true;
    // Every letter of some height reaches the baseline; quotes and dashes, which do not, are small.
    const bool isTall = letter.height() > kSmallMark * height;
    return isTall && letter.height() < height && below < -kFloat * height;
}

using Letters = std::span<const PixelBox>;

Letters trimmed(Letters letters) {
    constexpr std::size_t kLeastLetters = 3;  // to know where letters stand
    while (letters.size() >= kLeastLetters &&
           isIcon(letters[0], letters[1].left - letters[0].right, letters.subspan(1))) {
        letters = letters.subspan(1);
    }
    while (letters.size() >= kLeastLetters) {
        const std::size_t last = letters.size() - 1;
        const int gap = letters[last].left - letters[last - 1].right;
        if (!isIcon(letters[last], gap, letters.first(last))) break;
        letters = letters.first(last);
    }
    return letters;
}

Ink inkOf(Letters letters, const Ink& line) {
    PixelBox box = letters.front();
    for (const PixelBox& letter : letters) box.include(letter);
    return {{box.left + line.box.left, box.top + line.box.top, box.right + line.box.left,
             box.bottom + line.box.top},
            line.paper,
            line.level};
}

}  // namespace

std::vector<Ink> withoutIcons(const GrayFrame& frame, const Ink& line) {
    const auto letters = lettersOf(frame, line);
    if (letters.size() < 2) return {line};
    const double widest = kColumnGap * metricsOf(letters).height;
    std::vector<Ink> lines;
    for (std::size_t first = 0; first < letters.size();) {
        std::size_t end = first + 1;
        while (end < letters.size() && letters[end].left - letters[end - 1].right <= widest) ++end;
        lines.push_back(inkOf(trimmed(Letters(letters).subspan(first, end - first)), line));
        first = end;
    }
    return lines;
}

}  // namespace tandrel
