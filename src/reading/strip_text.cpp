#include "reading/strip_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>

#include "base/unicode.h"

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

// Figures have wide bearings where they stand in columns, above all "1"; between them only the
// network's own space counts.
bool isFigure(const std::string& letter) {
    return letter.size() == 1 && std::string_view("0123456789.,").contains(letter[0]);
}

}  // namespace

StripText composeText(const Strip& strip, const FoundLetters& found,
                      std::span<const std::string> letters) {
    const Gaps gaps = gapsOf(strip);
    StripText result;
    int count = 0, lastStep = 0;
    bool spacePending = false;
    std::string lastLetter;
    for (const FoundLetter& at : found.letters) {
        const std::string& letter = letters[static_cast<std::size_t>(at.letter)];
        if (letter.empty()) continue;
        if (letter == " ") {
            spacePending = true;
            continue;
        }
        const bool follows = count > 0;
        const bool inFigures = isFigure(letter) && isFigure(lastLetter);
        if (follows && (spacePending || (!inFigures && isGapBetween(gaps, lastStep, at.step)))) {
            result.text += ' ';
        }
        result.text += letter;
        spacePending = false;
        lastStep = at.step;
        lastLetter = letter;
        ++count;
    }
    if (count > 0) result.confidence = std::exp(found.logProbability / count);
    return result;
}

bool holdsFigures(std::string_view text) {
    if (text.find_first_of("0123456789$") != std::string_view::npos) return true;
    for (const std::string_view sign : {"€", "£", "¥"}) {
        if (text.contains(sign)) return true;
    }
    return false;
}

std::string withoutMarks(std::string_view text) {
    constexpr std::array<std::string_view, 8> kTrailing = {" >", ">",  " ›", "›",
                                                           " <", " |", " ~", " &"};
    constexpr std::array<std::string_view, 10> kLeading = {"< ", "<",  "‹ ", "‹",  "> ",
                                                           "| ", "& ", "© ", "® ", "@ "};
    bool changed = true;
    while (changed) {
        changed = false;
        for (const std::string_view mark : kTrailing) {
            if (text.size() <= mark.size() || !text.ends_with(mark)) continue;
            text.remove_suffix(mark.size());
            changed = true;
        }
        for (const std::string_view mark : kLeading) {
            if (text.size() <= mark.size() || !text.starts_with(mark)) continue;
            text.remove_prefix(mark.size());
            changed = true;
        }
    }
    const bool hasLetter = std::ranges::any_of(text, [](char c) {
        const auto byte = static_cast<unsigned char>(c);
        return std::isalnum(byte) || byte >= 0x80;
    });
    constexpr std::array<std::string_view, 8> kSigns = {"©", "®", "°", "»", "«", "—", "‘", "’"};
    if (!hasLetter || std::ranges::find(kSigns, text) != kSigns.end()) return {};
    return trimmed(text);
}

}  // namespace tandrel
