#include "reading/word_gaps.h"

#include <algorithm>

namespace tandrel {

namespace {

// Columns without ink between two with ink.
struct Gap {
    int begin = 0;
    int end = 0;
};

int inkHeight(const Strip& strip) {
    int top = Strip::kRows, bottom = 0;
    for (int y = 0; y < Strip::kRows; ++y) {
        const std::uint8_t* row = strip.row(y);
        if (std::none_of(row, row + strip.columns, Strip::isInk)) continue;
        top = std::min(top, y);
        bottom = y + 1;
    }
    return std::max(1, bottom - top);
}

// The gaps that may be spaces.
std::vector<Gap> wideGaps(const Strip& strip) {
    constexpr int kLeast = 5;  // columns, to skip the gaps between letters
    std::vector<bool> inked(static_cast<std::size_t>(strip.columns));
    for (int y = 0; y < Strip::kRows; ++y) {
        const std::uint8_t* row = strip.row(y);
        for (int x = 0; x < strip.columns; ++x) {
            if (Strip::isInk(row[x])) inked[x] = true;
        }
    }
    std::vector<Gap> gaps;
    int run = 0;
    for (int x = 0; x < strip.columns; ++x) {
        if (inked[x] && run < x && run >= kLeast) gaps.push_back({x - run, x});
        run = inked[x] ? 0 : run + 1;
    }
    return gaps;
}

}  // namespace

std::vector<double> unseenGaps(const Strip& strip, std::span<const FoundLetter> found,
                               std::span<const std::string> letters) {
    // Columns by which the network's places may be off.
    constexpr int kEarly = 9, kNear = 6;
    auto columnOf = [](const FoundLetter& at) {
        return at.step * StripScores::kColumnsPerStep + StripScores::kColumnsPerStep / 2;
    };
    const int height = inkHeight(strip);
    std::vector<double> gaps(found.size(), 0.0);
    for (const Gap& gap : wideGaps(strip)) {
        const bool hasSpace = std::ranges::any_of(found, [&](const FoundLetter& at) {
            return letters[static_cast<std::size_t>(at.letter)] == " " &&
                   columnOf(at) >= gap.begin - kEarly && columnOf(at) <= gap.end + kNear;
        });
        const auto behind = std::ranges::find_if(found, [&](const FoundLetter& at) {
            return columnOf(at) >= (gap.begin + gap.end) / 2;
        });
        if (!hasSpace && behind != found.end()) {
            gaps[behind - found.begin()] = static_cast<double>(gap.end - gap.begin) / height;
        }
    }
    return gaps;
}

}  // namespace tandrel
