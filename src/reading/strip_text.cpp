#include "reading/strip_text.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "reading/pixel_box.h"
#include "reading/text_marks.h"
#include "reading/word_gaps.h"

namespace tandrel {

namespace {

// A gap this wide, in heights of the ink, is a space even where the network saw none.
constexpr double kSpaceGap = 0.30;
// Figures have wide bearings where they stand in columns, above all "1".
constexpr double kFigureGap = 0.6;
// Letters of real words at screen quality are nearly always above this.
constexpr double kSureLetter = 0.75;
constexpr int kMostIconLetters = 3;
// The network splits its belief between three letters of the same shape.
constexpr double kLoneNought = 0.8;

bool isFigure(const std::string& letter) {
    return letter.size() == 1 && std::string_view("0123456789.,").contains(letter[0]);
}

bool isInFigures(const std::string& letter) { return isFigure(letter) || letter == ":"; }

struct Word {
    std::string text = {};
    int letters = 0;
    int firstStep = 0;
    int lastStep = 0;
    double leastProbability = 1;
    double leastFigure = 1;
    double logProbability = 0;
    int top = 0;  // of the ink, in rows of the strip
    int bottom = 0;
};

// The rows that hold ink between two steps.
void measureInk(const Strip& strip, Word& word) {
    constexpr int kColumns = StripScores::kColumnsPerStep;
    const int left = std::max(0, (word.firstStep - 1) * kColumns);
    const int right = std::min(strip.columns, (word.lastStep + 1) * kColumns);
    word.top = Strip::kRows;
    for (int y = 0; y < Strip::kRows; ++y) {
        const std::uint8_t* row = strip.row(y);
        if (std::none_of(row + left, row + right, Strip::isInk)) continue;
        word.top = std::min(word.top, y);
        word.bottom = y + 1;
    }
}

std::vector<Word> wordsOf(const Strip& strip, const FoundLetters& found,
                          std::span<const std::string> letters) {
    const auto gaps = unseenGaps(strip, found.letters, letters);
    std::vector<Word> words;
    bool spacePending = false;
    double gapPending = 0;
    std::string lastLetter;
    for (std::size_t i = 0; i < found.letters.size(); ++i) {
        const FoundLetter& at = found.letters[i];
        gapPending = std::max(gapPending, gaps[i]);
        const std::string& letter = letters[static_cast<std::size_t>(at.letter)];
        if (letter.empty()) continue;
        if (letter == " ") {
            spacePending = true;
            continue;
        }
        const bool inFigures = isInFigures(letter) && isInFigures(lastLetter);
        if (words.empty() || spacePending || gapPending >= (inFigures ? kFigureGap : kSpaceGap)) {
            words.push_back({.firstStep = at.step});
        }
        Word& word = words.back();
        word.text += letter;
        word.lastStep = at.step;
        word.leastProbability = std::min(word.leastProbability, at.probability);
        if (isFigure(letter)) word.leastFigure = std::min(word.leastFigure, at.probability);
        word.logProbability += std::log(std::max(1e-6, at.probability));
        ++word.letters;
        spacePending = false;
        gapPending = 0;
        lastLetter = letter;
    }
    for (Word& word : words) measureInk(strip, word);
    return words;
}

// Icons beside a text are read as short words that the network is not sure of. A word that may be
// part of an amount is never taken for one.
bool looksLikeIcon(const Word& word) {
    return word.letters <= kMostIconLetters && word.leastProbability < kSureLetter &&
           !holdsFigures(word.text);
}

bool isDigits(const Word& word) {
    return word.text.find_first_not_of("0123456789:") == std::string::npos;
}

// All digits of a line are of one height on one baseline; a single one that is not is an icon, such
// as the arrow beside the time.
bool isOddDigit(const Word& word, std::span<const Word> others) {
    if (word.letters != 1 || !isDigits(word)) return false;
    for (const Word& other : others) {
        if (&other == &word || !isDigits(other)) continue;
        const int slack = std::max(2, (other.bottom - other.top) / 6);
        if (std::abs(other.top - word.top) > slack ||
            std::abs(other.bottom - word.bottom) > slack) {
            return true;
        }
    }
    return false;
}

// A magnifier, a radio button or another round icon before the text.
bool isRoundIcon(const Word& word) {
    constexpr std::array<std::string_view, 6> kRound = {"Q", "O", "©", "®", "@", "&"};
    return std::ranges::find(kRound, word.text) != kRound.end();
}

bool isSure(const Word& word) { return word.leastProbability >= kSureLetter; }

// The words from the first to the last that is no icon; all of them if none is sure.
std::span<const Word> withoutIcons(std::span<const Word> words) {
    if (std::ranges::none_of(words, isSure)) return words;
    auto isIcon = [&](const Word& word) { return looksLikeIcon(word) || isOddDigit(word, words); };
    while (words.size() > 1 && (isIcon(words.front()) || isRoundIcon(words.front()))) {
        words = words.subspan(1);
    }
    while (words.size() > 1 && isIcon(words.back())) words = words.first(words.size() - 1);
    return words;
}

PixelBox inkBox(const Strip& strip) {
    PixelBox box{Strip::kSideMargin, Strip::kRows, strip.columns - Strip::kSideMargin, 0};
    for (int y = 0; y < Strip::kRows; ++y) {
        const std::uint8_t* row = strip.row(y);
        if (std::none_of(row, row + strip.columns, Strip::isInk)) continue;
        box.top = std::min(box.top, y);
        box.bottom = y + 1;
    }
    return box;
}

// A ring by itself: a nought, which the network without neighbours takes for an O. Noughts are
// narrow in every font, the letter is round.
bool isLoneNought(const Strip& strip, const std::string& text) {
    if (text != "O" && text != "o" && text != "0") return false;
    const PixelBox ink = inkBox(strip);
    if (ink.empty()) return false;
    return ink.width() * 100 < ink.height() * 82 && ink.width() * 100 > ink.height() * 40 &&
           !Strip::isInk(strip.row((ink.top + ink.bottom) / 2)[strip.columns / 2]);
}

// A letter by itself, of which the network cannot tell whether it is a capital, and so it says
// both.
bool isSaidTwice(const Strip& strip, const std::string& text) {
    if (text.size() != 2 || (text[0] | 0x20) != (text[1] | 0x20)) return false;
    const PixelBox ink = inkBox(strip);
    return ink.width() * 10 < ink.height() * 13;
}

}  // namespace

StripText composeText(const Strip& strip, const FoundLetters& found,
                      std::span<const std::string> letters) {
    const auto all = wordsOf(strip, found, letters);
    if (all.empty()) return {};
    const auto words = withoutIcons(all);
    StripText result;
    int count = 0;
    double logProbability = 0;
    for (const Word& word : words) {
        if (!result.text.empty()) result.text += ' ';
        result.text += word.text;
        count += word.letters;
        logProbability += word.logProbability;
        if (holdsFigures(word.text)) {
            result.leastFigure = std::min(result.leastFigure, word.leastFigure);
        }
    }
    // Where all words are kept, the search's own sum over all spacings is the better measure.
    if (words.size() == all.size()) logProbability = found.logProbability;
    result.confidence = std::exp(logProbability / count);
    const double inkColumns = strip.columns - 2 * Strip::kSideMargin;
    auto placeOf = [&](int step) {
        const double column = (step + 0.5) * StripScores::kColumnsPerStep - Strip::kSideMargin;
        return std::clamp(column / inkColumns, 0.0, 1.0);
    };
    if (isSaidTwice(strip, result.text)) result.text.pop_back();
    if (isLoneNought(strip, result.text)) {
        result.text = "0";
        result.confidence = std::max(result.confidence, kLoneNought);
    }
    if (words.begin() != std::span<const Word>(all).begin()) {
        const Word& dropped = *(words.data() - 1);
        result.begin = (placeOf(dropped.lastStep) + placeOf(words.front().firstStep)) / 2;
    }
    if (words.size() < all.size() && &words.back() != &all.back()) {
        const Word& dropped = *(&words.back() + 1);
        result.end = (placeOf(dropped.firstStep) + placeOf(words.back().lastStep)) / 2;
    }
    return result;
}

}  // namespace tandrel
