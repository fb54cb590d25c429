#include "reading/strip_text.h"

#include <algorithm>
#include <array>
#include <cctype>
#include <cmath>
#include <cstring>

#include "base/unicode.h"
#include "reading/components.h"

namespace tandrel {

namespace {

// A gap this wide, in heights of the ink, is a space even where the network saw none.
constexpr double kSpaceGap = 0.30;
// Figures have wide bearings where they stand in columns, above all "1".
constexpr double kFigureGap = 0.6;
constexpr std::uint8_t kInkBelow = 170;
// Letters of real words at screen quality are nearly always above this.
constexpr double kSureLetter = 0.75;
constexpr int kMostIconLetters = 3;

// Columns without ink between two with ink.
struct Gap {
    int begin = 0;
    int end = 0;
};

// The gaps as wide as a space.
std::vector<Gap> wideGaps(const Strip& strip) {
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
    const double leastSpace = kSpaceGap * std::max(1, bottom - top);
    std::vector<Gap> gaps;
    int run = 0;
    for (int x = 0; x < strip.columns; ++x) {
        if (inked[x] && run < x && run >= leastSpace) gaps.push_back({x - run, x});
        run = inked[x] ? 0 : run + 1;
    }
    return gaps;
}

// For each letter whether it follows a wide gap in which the network found no space.
std::vector<bool> followsGap(const Strip& strip, std::span<const FoundLetter> found,
                             std::span<const std::string> letters) {
    // Columns by which the network's places may be off.
    constexpr int kEarly = 9, kNear = 6;
    auto columnOf = [](const FoundLetter& at) {
        return at.step * StripScores::kColumnsPerStep + StripScores::kColumnsPerStep / 2;
    };
    std::vector<bool> follows(found.size());
    for (const Gap& gap : wideGaps(strip)) {
        const bool hasSpace = std::ranges::any_of(found, [&](const FoundLetter& at) {
            return letters[static_cast<std::size_t>(at.letter)] == " " &&
                   columnOf(at) >= gap.begin - kEarly && columnOf(at) <= gap.end + kNear;
        });
        const auto behind = std::ranges::find_if(found, [&](const FoundLetter& at) {
            return columnOf(at) >= (gap.begin + gap.end) / 2;
        });
        if (!hasSpace && behind != found.end()) follows[behind - found.begin()] = true;
    }
    return follows;
}

// Figures have wide bearings where they stand in columns, above all "1"; between them only the
// network's own space counts.
bool isFigure(const std::string& letter) {
    return letter.size() == 1 && std::string_view("0123456789.,").contains(letter[0]);
}

}  // namespace

namespace {

struct Word {
    std::string text = {};
    int letters = 0;
    int firstStep = 0;
    int lastStep = 0;
    double leastProbability = 1;
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
        if (std::none_of(row + left, row + right, [](auto v) { return v < kInkBelow; })) continue;
        word.top = std::min(word.top, y);
        word.bottom = y + 1;
    }
}

std::vector<Word> wordsOf(const Strip& strip, const FoundLetters& found,
                          std::span<const std::string> letters) {
    const auto gaps = followsGap(strip, found.letters, letters);
    std::vector<Word> words;
    bool spacePending = false, gapPending = false;
    std::string lastLetter;
    for (std::size_t i = 0; i < found.letters.size(); ++i) {
        const FoundLetter& at = found.letters[i];
        gapPending |= gaps[i];
        const std::string& letter = letters[static_cast<std::size_t>(at.letter)];
        if (letter.empty()) continue;
        if (letter == " ") {
            spacePending = true;
            continue;
        }
        const bool inFigures = isFigure(letter) && isFigure(lastLetter);
        if (words.empty() || spacePending || (gapPending && !inFigures)) {
            words.push_back({.firstStep = at.step});
        }
        Word& word = words.back();
        word.text += letter;
        word.lastStep = at.step;
        word.leastProbability = std::min(word.leastProbability, at.probability);
        word.logProbability += std::log(std::max(1e-6, at.probability));
        ++word.letters;
        spacePending = gapPending = false;
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
    }
    // Where all words are kept, the search's own sum over all spacings is the better measure.
    if (words.size() == all.size()) logProbability = found.logProbability;
    result.confidence = std::exp(logProbability / count);
    const double inkColumns = strip.columns - 2 * Strip::kSideMargin;
    auto placeOf = [&](int step) {
        const double column = (step + 0.5) * StripScores::kColumnsPerStep - Strip::kSideMargin;
        return std::clamp(column / inkColumns, 0.0, 1.0);
    };
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

bool contradictsInk(const Strip& strip, std::string_view text) {
    std::vector<std::uint8_t> mask(strip.pixels.size());
    std::ranges::transform(strip.pixels, mask.begin(),
                           [](std::uint8_t v) { return v < kInkBelow; });
    const auto parts = connectedComponents(mask.data(), strip.columns, Strip::kRows);
    PixelBox all{strip.columns, Strip::kRows, 0, 0};
    int digitBottom = 0;
    for (const Component& part : parts) all.include(part.box);
    std::vector<int> bottoms;
    for (const Component& part : parts) {
        if (part.box.height() * 2 > all.height()) bottoms.push_back(part.box.bottom);
    }
    if (bottoms.empty()) return true;
    std::ranges::sort(bottoms);
    digitBottom = bottoms[bottoms.size() / 2];
    const auto marks = std::ranges::count_if(parts, [&](const Component& part) {
        const bool isSmall =
            part.box.height() * 5 <= all.height() * 2 && part.box.width() * 3 <= all.height();
        return isSmall && part.area > 1 && part.box.top * 2 > all.top + digitBottom &&
               part.box.bottom * 8 >= digitBottom * 7;
    });
    const auto expected =
        std::ranges::count_if(text, [](char c) { return std::strchr(".,:;!?", c) && c; });
    return marks != expected;
}

bool holdsFigures(std::string_view text) {
    if (text.find_first_of("0123456789$") != std::string_view::npos) return true;
    for (const std::string_view sign : {"€", "£", "¥"}) {
        if (text.contains(sign)) return true;
    }
    return false;
}

bool mayMisspellSign(std::string_view text) {
    for (std::size_t at = 0; (at = text.find('S', at)) != std::string_view::npos; ++at) {
        const std::string_view rest = text.substr(at + 1);
        const std::size_t figures = std::min(rest.size(), rest.find_first_not_of("0123456789.,"));
        if (figures > 0 && rest.substr(0, figures).find_first_of(".,") != std::string_view::npos) {
            return true;
        }
    }
    return false;
}

namespace {

// Anything beyond ASCII that is no mark is a letter or a currency sign.
bool isLetterOrDigit(const std::string& character) {
    constexpr std::array<std::string_view, 12> kMarks = {"©", "®", "°", "»", "«", "—",
                                                         "–", "‘", "’", "“", "”", "™"};
    const auto first = static_cast<unsigned char>(character.front());
    if (first < 0x80) return std::isalnum(first) || first == '$';
    return std::ranges::find(kMarks, character) == kMarks.end();
}

}  // namespace

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
    if (std::ranges::none_of(graphemes(text), isLetterOrDigit)) return {};
    return trimmed(text);
}

}  // namespace tandrel
