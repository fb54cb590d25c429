#include "reading/line_trimmer.h"

#include <algorithm>
#include <cstdlib>
#include <span>

#include "reading/components.h"

namespace tandrel {

namespace {

// All shares are of the height of the line's tallest letters.
constexpr double kColumnGap = 0.9;  // no space between words is as wide
constexpr double kIconGap = 0.28;   // no space between letters is as wide
constexpr double kSquareGap = 0.2;  // few are as wide
constexpr double kOvershoot = 0.07;
constexpr double kFloat = 0.04;
constexpr double kWideIcon = 1.5;
constexpr double kLargeIcon = 0.72;  // larger than a plus sign
constexpr double kLeastPlate = 0.6;
// What letters cover of their boxes is less.
constexpr int kPlatePercent = 70;
constexpr int kSolidBar = 65;

struct Letter {
    PixelBox box;
    int area = 0;  // pixels of ink
};
using Letters = std::span<const Letter>;

// The line's letters from left to right; what stands above each other, such as an i and its dot,
// is one.
std::vector<Letter> lettersOf(const GrayFrame& frame, const Ink& line) {
    const auto mask = inkMask(frame, line);
    std::vector<Letter> parts;
    for (const Component& part :
         connectedComponents(mask.data(), line.box.width(), line.box.height())) {
        parts.push_back({part.box, part.area});
    }
    std::ranges::sort(parts, {}, [](const Letter& part) { return part.box.left; });
    std::vector<Letter> letters;
    for (const Letter& part : parts) {
        if (!letters.empty() && sharedColumns(letters.back().box, part.box) > 0) {
            letters.back().box.include(part.box);
            letters.back().area += part.area;
        } else {
            letters.push_back(part);
        }
    }
    return letters;
}

bool covers(const Letter& letter, int percent) {
    return letter.area * 100 > letter.box.width() * letter.box.height() * percent;
}

// The bars that show how well a phone hears its network: solid, on one foot, each taller than the
// last.
bool areSignalBars(Letters letters) {
    constexpr std::size_t kLeastBars = 3;
    if (letters.size() < kLeastBars) return false;
    for (std::size_t i = 0; i < letters.size(); ++i) {
        const PixelBox& bar = letters[i].box;
        if (!covers(letters[i], kSolidBar)) return false;
        if (i == 0) continue;
        const PixelBox& last = letters[i - 1].box;
        if (std::abs(bar.bottom - last.bottom) > 1 || bar.height() <= last.height()) return false;
    }
    return true;
}

struct Metrics {
    int top = 0;
    int baseline = 0;
    double height = 0;
};

// Where the letters stand: the middle one of their lower edges, since most have no descender, and
// the upper edge of the tallest but one, if there are so many.
Metrics metricsOf(Letters letters) {
    std::vector<int> tops, bottoms;
    for (const Letter& letter : letters) {
        tops.push_back(letter.box.top);
        bottoms.push_back(letter.box.bottom);
    }
    std::ranges::sort(tops);
    std::ranges::sort(bottoms);
    Metrics metrics;
    // Of two, the upper one: a currency sign hangs below the line.
    metrics.baseline = bottoms[bottoms.size() == 2 ? 0 : bottoms.size() / 2];
    metrics.top = tops[tops.size() > 3 ? 1 : 0];
    metrics.height = std::max(1, metrics.baseline - metrics.top);
    return metrics;
}

// Whether a letter that stands apart at an end of the line is none. Currency signs, which rise
// above and below the line too, are narrow.
bool isIcon(const PixelBox& letter, int gap, Letters others) {
    const Metrics metrics = metricsOf(others);
    const double height = metrics.height;
    const bool isSquare = letter.width() * 20 > letter.height() * 17;
    const bool isLarge = letter.height() > kLargeIcon * height;
    if (gap < (isSquare && isLarge ? kSquareGap : kIconGap) * height) return false;
    if (letter.width() > kWideIcon * height) return gap >= kIconGap * height;
    const double above = metrics.top - letter.top, below = letter.bottom - metrics.baseline;
    if (isSquare && above > kOvershoot * height && below > kOvershoot * height) return true;
    // Every letter of some height reaches the baseline; quotes, dashes and signs are small.
    return isLarge && letter.height() < height && below < -kFloat * height;
}

int gapBefore(const Letter& letter, const Letter& left) { return letter.box.left - left.box.right; }

Letters trimmed(Letters letters) {
    constexpr std::size_t kLeastLetters = 3;  // to know where letters stand
    while (letters.size() >= kLeastLetters &&
           isIcon(letters[0].box, gapBefore(letters[1], letters[0]), letters.subspan(1))) {
        letters = letters.subspan(1);
    }
    while (letters.size() >= kLeastLetters) {
        const std::size_t last = letters.size() - 1;
        const int gap = gapBefore(letters[last], letters[last - 1]);
        if (!isIcon(letters[last].box, gap, letters.first(last))) break;
        letters = letters.first(last);
    }
    return letters;
}

PixelBox onFrame(const PixelBox& box, const Ink& line) {
    return {box.left + line.box.left, box.top + line.box.top, box.right + line.box.left,
            box.bottom + line.box.top};
}

Ink inkOf(Letters letters, const Ink& line) {
    PixelBox box = letters.front().box;
    for (const Letter& letter : letters) box.include(letter.box);
    return {onFrame(box, line), line.paper, line.level};
}

// A pill with text of its own, or a battery, beside the line's letters.
bool isPlate(const Letter& letter, double height) {
    const PixelBox& box = letter.box;
    return covers(letter, kPlatePercent) && 5 * box.width() > 6 * box.height() &&
           box.height() > kLeastPlate * height;
}

}  // namespace

std::vector<Ink> withoutIcons(const GrayFrame& frame, const Ink& line) {
    const auto letters = lettersOf(frame, line);
    if (letters.size() < 2) return {line};
    const double height = metricsOf(letters).height;
    std::vector<Ink> lines;
    for (std::size_t first = 0; first < letters.size();) {
        std::size_t end = first + 1;
        if (isPlate(letters[first], height)) {
            if (auto ink = findInkOnPlate(frame, onFrame(letters[first].box, line))) {
                lines.push_back(*ink);
            }
            first = end;
            continue;
        }
        while (end < letters.size() && !isPlate(letters[end], height) &&
               gapBefore(letters[end], letters[end - 1]) <= kColumnGap * height) {
            ++end;
        }
        const Letters kept = trimmed(Letters(letters).subspan(first, end - first));
        if (!areSignalBars(kept)) lines.push_back(inkOf(kept, line));
        first = end;
    }
    return lines;
}

}  // namespace tandrel
