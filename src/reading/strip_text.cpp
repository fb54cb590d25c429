#include "reading/strip_text.h"

#include <cmath>

namespace tandrel {

namespace {

// A gap this wide, in heights of the ink, is a space even where the network saw none.
constexpr double kSpaceGap = 0.34;
constexpr std::uint8_t kInkBelow = 170;

// For each column of a strip how many columns without ink end there.
struct Gaps {
    std::vector<int> runs;
    int leastSpace = 0;
};

Gaps gapsOf(const Strip& strip) {
    Gaps gaps;
    std::vector<bool> inked(static_cast<std::size_t>(strip.columns));
    int top = Strip::kRows, bottom = 0;
    for (int y = 0; y < Strip::kRows; ++y) {
        const std::uint8_t* row = strip.row(y);
        for (int x = 0; x < strip.columns; ++x) {
            if (row[x] >= kInkBelow) continue;
            inked[x] = true;
            top = std::min(top, y);
            bottom = y + 1;
        }
    }
    gaps.leastSpace = static_cast<int>(std::ceil(kSpaceGap * std::max(1, bottom - top)));
    int run = 0;
    for (int x = 0; x < strip.columns; ++x) gaps.runs.push_back(run = inked[x] ? 0 : run + 1);
    return gaps;
}

bool isGapBetween(const Gaps& gaps, int fromStep, int toStep) {
    constexpr int kColumns = StripScores::kColumnsPerStep;
    const int end = std::min(static_cast<int>(gaps.runs.size()), (toStep + 1) * kColumns);
    for (int x = fromStep * kColumns; x < end; ++x) {
        // A run counts only as far as it lies behind the first letter.
        if (std::min(gaps.runs[x], x - fromStep * kColumns + 1) >= gaps.leastSpace) return true;
    }
    return false;
}

}  // namespace

StripText composeText(const Strip& strip, const FoundLetters& found,
                      std::span<const std::string> letters) {
    const Gaps gaps = gapsOf(strip);
    StripText result;
    int count = 0, lastStep = 0;
    bool spacePending = false;
    for (const FoundLetter& at : found.letters) {
        const std::string& letter = letters[static_cast<std::size_t>(at.letter)];
        if (letter.empty()) continue;
        if (letter == " ") {
            spacePending = true;
            continue;
        }
        const bool follows = count > 0;
        if (follows && (spacePending || isGapBetween(gaps, lastStep, at.step))) result.text += ' ';
        result.text += letter;
        spacePending = false;
        lastStep = at.step;
        ++count;
    }
    if (count > 0) result.confidence = std::exp(found.logProbability / count);
    return result;
}

}  // namespace tandrel
