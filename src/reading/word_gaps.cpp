#include "reading/word_gaps.h"

#include <algorithm>

namespace tandrel {

namespace {

constexpr int kLeastGap = 5;  // columns, to skip the gaps between letters

// Columns with ink between two without.
struct InkRun {
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

std::vector<InkRun> inkRuns(const Strip& strip) {
    std::vector<std::uint8_t> inked(static_cast<std::size_t>(strip.columns));
    for (int y = 0; y < Strip::kRows; ++y) {
        const std::uint8_t* row = strip.row(y);
        for (int x = 0; x < strip.columns; ++x) inked[x] |= Strip::isInk(row[x]);
    }
    std::vector<InkRun> runs;
    for (int x = 0; x < strip.columns; ++x) {
        if (!inked[x]) continue;
        if (runs.empty() || runs.back().end < x) runs.push_back({x, x});
        runs.back().end = x + 1;
    }
    return runs;
}

// The network is early with some letters and most sure of others only behind them.
int columnOf(const FoundLetter& at) {
    return (at.firstStep + at.step) * StripScores::kColumnsPerStep / 2 +
           StripScores::kColumnsPerStep / 2;
}

}  // namespace

std::vector<double> unseenGaps(const Strip& strip, std::span<const FoundLetter> found,
                               std::span<const std::string> letters) {
    // Columns by which the network's places may be off.
    constexpr int kEarly = 9, kNear = 6;
    auto isSpace = [&](const FoundLetter& at) {
        return letters[static_cast<std::size_t>(at.letter)] == " ";
    };
    const auto runs = inkRuns(strip);
    const auto letterCount =
        found.size() - static_cast<std::size_t>(std::ranges::count_if(found, isSpace));
    const bool isEachItsRun = runs.size() == letterCount;
    const int height = inkHeight(strip);
    std::vector<double> gaps(found.size(), 0.0);
    for (std::size_t i = 1; i < runs.size(); ++i) {
        const int begin = runs[i - 1].end, end = runs[i].begin;
        if (end - begin < kLeastGap) continue;
        std::size_t behind = 0;
        if (isEachItsRun) {
            // The gap before the i-th run is the one before the i-th letter.
            for (std::size_t seen = 0; behind < found.size(); ++behind) {
                if (!isSpace(found[behind]) && seen++ == i) break;
            }
            if (behind > 0 && isSpace(found[behind - 1])) continue;
        } else {
            const bool hasSpace = std::ranges::any_of(found, [&](const FoundLetter& at) {
                return isSpace(at) && columnOf(at) >= begin - kEarly && columnOf(at) <= end + kNear;
            });
            if (hasSpace) continue;
            while (behind < found.size() && columnOf(found[behind]) < (begin + end) / 2) ++behind;
        }
        if (behind < found.size()) gaps[behind] = static_cast<double>(end - begin) / height;
    }
    return gaps;
}

}  // namespace tandrel
