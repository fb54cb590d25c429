#include "reading/point_marks.h"

#include <algorithm>
#include <string_view>
#include <utility>

#include "base/unicode.h"
#include "reading/components.h"

namespace tandrel {

namespace {

// Where the line's digits and marks stand, from left to right.
struct InkOfLine {
    std::vector<PixelBox> letters;
    std::vector<PixelBox> marks;
    int foot = 0;    // of the digits
    int height = 0;  // of the digits
};

// Parts above each other, such as those of an equals sign, are one letter; letters that lean over
// each other a little are two.
void addLetter(const PixelBox& part, std::vector<PixelBox>& letters) {
    if (!letters.empty()) {
        const int shared = sharedColumns(letters.back(), part);
        if (shared * 2 > std::min(letters.back().width(), part.width())) {
            letters.back().include(part);
            return;
        }
    }
    letters.push_back(part);
}

InkOfLine inkOfLine(const Strip& strip) {
    std::vector<std::uint8_t> mask(strip.pixels.size());
    std::ranges::transform(strip.pixels, mask.begin(), Strip::isInk);
    auto parts = connectedComponents(mask.data(), strip.columns, Strip::kRows);
    std::ranges::sort(parts, {}, [](const Component& part) { return part.box.left; });
    PixelBox all{strip.columns, Strip::kRows, 0, 0};
    for (const Component& part : parts) all.include(part.box);
    InkOfLine ink;
    std::vector<int> feet, heights;
    for (const Component& part : parts) {
        if (part.box.height() * 2 <= all.height()) continue;
        feet.push_back(part.box.bottom);
        heights.push_back(part.box.height());
    }
    if (feet.empty()) return ink;
    std::ranges::sort(feet);
    std::ranges::sort(heights);
    ink.foot = feet[feet.size() / 2];
    ink.height = heights[heights.size() / 2];
    for (const Component& part : parts) {
        const PixelBox& box = part.box;
        const bool isSmall = box.height() * 5 <= all.height() * 2 &&
                             box.width() * 3 <= all.height() && part.area > 1;
        const bool isAtFoot = box.top * 2 > all.top + ink.foot && box.bottom * 8 >= ink.foot * 7;
        if (isSmall && isAtFoot) {
            ink.marks.push_back(box);
        } else if (part.area > 1) {
            addLetter(box, ink.letters);
        }
    }
    return ink;
}

// A point or a comma where its shape tells, else `otherwise`.
char kindOf(const PixelBox& mark, const InkOfLine& ink, char otherwise) {
    const int below = mark.bottom - ink.foot;
    if (below * 100 >= 9 * ink.height) return ',';
    if (below * 100 <= 4 * ink.height && mark.height() * 100 <= 24 * ink.height) return '.';
    return otherwise;
}

bool isPoint(const std::string& letter) { return letter == "." || letter == ","; }

bool isDigit(const std::string& letter) {
    return letter.size() == 1 && letter[0] >= '0' && letter[0] <= '9';
}

// The text's letters without its points, and for each what stood right before it.
struct BareText {
    std::vector<std::string> letters;
    std::vector<std::string>
        before;  // spaces and points; one more than letters, the last is the end
};

BareText bareTextOf(const std::string& text) {
    BareText bare;
    std::string pending;
    for (const std::string& letter : graphemes(text)) {
        if (letter == " " || isPoint(letter)) {
            pending += letter;
            continue;
        }
        bare.before.push_back(std::exchange(pending, {}));
        bare.letters.push_back(letter);
    }
    bare.before.push_back(pending);
    return bare;
}

int centerOf(const PixelBox& box) { return (box.left + box.right) / 2; }

// A point of its own stands beneath a question mark and beneath no digit.
bool isDotted(const PixelBox& letter, const InkOfLine& ink) {
    return std::ranges::any_of(ink.marks, [&](const PixelBox& mark) {
        return centerOf(mark) > letter.left && centerOf(mark) < letter.right &&
               letter.bottom <= mark.top + 1;
    });
}

std::string seenLetter(const std::string& letter, const PixelBox& box, const InkOfLine& ink) {
    const bool isLikeQuestion = letter == "2" || letter == "7";
    return isLikeQuestion && isDotted(box, ink) ? "?" : letter;
}

// Between two digits there is a point exactly where the ink has one.
std::string asInkHas(const BareText& bare, const InkOfLine& ink) {
    std::string text = bare.before.front();
    for (std::size_t i = 0; i < bare.letters.size(); ++i) {
        text += seenLetter(bare.letters[i], ink.letters[i], ink);
        const std::string& old = bare.before[i + 1];
        const bool isInFigure = !old.contains(' ') && i + 1 < bare.letters.size() &&
                                isDigit(bare.letters[i]) && isDigit(bare.letters[i + 1]);
        if (!isInFigure) {
            text += old;
            continue;
        }
        const int begin = centerOf(ink.letters[i]), end = centerOf(ink.letters[i + 1]);
        const auto mark = std::ranges::find_if(ink.marks, [&](const PixelBox& box) {
            return centerOf(box) > begin && centerOf(box) < end;
        });
        const std::size_t point = old.find_first_of(".,");
        if (mark == ink.marks.end()) {
            text += point == std::string::npos ? old : "";
        } else {
            text += kindOf(*mark, ink, point == std::string::npos ? '.' : old[point]);
        }
    }
    return text;
}

}  // namespace

PointCheck checkPoints(const Strip& strip, const std::string& text) {
    const InkOfLine ink = inkOfLine(strip);
    const BareText bare = bareTextOf(text);
    const auto expected =
        std::ranges::count_if(text, [](char c) { return std::string_view(".,:;!?").contains(c); });
    const bool isAsMany = static_cast<std::ptrdiff_t>(ink.marks.size()) == expected;
    if (bare.letters.size() == ink.letters.size() && !bare.letters.empty()) {
        std::string corrected = asInkHas(bare, ink);
        if (corrected != text) return {PointMarks::kCorrected, false, std::move(corrected)};
    }
    // Letters that touch are one piece of ink, so that fewer of these say nothing.
    const bool lacksLetters = bare.letters.size() < ink.letters.size();
    return {isAsMany ? PointMarks::kSame : PointMarks::kUnlike, lacksLetters, text};
}

}  // namespace tandrel
