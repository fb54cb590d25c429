#include "reading/text_marks.h"

#include <algorithm>
#include <array>
#include <cctype>

#include "base/ascii.h"
#include "base/unicode.h"

namespace tandrel {

bool holdsFigures(std::string_view text) {
    if (text.find_first_of("0123456789$") != std::string_view::npos) return true;
    for (const std::string_view sign : {"€", "£", "¥"}) {
        if (text.contains(sign)) return true;
    }
    return false;
}

namespace {

bool isPoint(char c) { return c == '.' || c == ','; }

}  // namespace

bool holdsAmount(std::string_view text) {
    const bool hasDigit = text.find_first_of("0123456789") != std::string_view::npos;
    const bool hasSign = std::ranges::any_of(std::array<std::string_view, 4>{"$", "€", "£", "¥"},
                                             [&](auto sign) { return text.contains(sign); });
    if (hasDigit && hasSign) return true;
    for (std::size_t i = 1; i + 2 < text.size(); ++i) {
        if (isAsciiDigit(text[i - 1]) && isPoint(text[i]) && isAsciiDigit(text[i + 1]) &&
            isAsciiDigit(text[i + 2])) {
            return true;
        }
    }
    return false;
}

bool mayMisspellAmount(std::string_view text) {
    for (std::size_t at = 0; (at = text.find('S', at)) != std::string_view::npos; ++at) {
        const std::string_view rest = text.substr(at + 1);
        const std::size_t figures = std::min(rest.size(), rest.find_first_not_of("0123456789.,"));
        if (figures > 0 && rest.substr(0, figures).find_first_of(".,") != std::string_view::npos) {
            return true;
        }
    }
    // Such as "B97.59" and "O12.50"; R and other letters are currencies.
    for (std::size_t i = 1; i + 2 < text.size(); ++i) {
        if (!isPoint(text[i]) || !isAsciiDigit(text[i + 1]) || !isAsciiDigit(text[i + 2])) continue;
        std::size_t first = i;
        while (first > 0 && (isAsciiDigit(text[first - 1]) || isPoint(text[first - 1]))) --first;
        if (first > 0 && first < i && std::string_view("BDGIOQZl").contains(text[first - 1]))
            return true;
    }
    // A gap within a figure: "48, 437.75".
    for (std::size_t i = 1; i + 2 < text.size(); ++i) {
        if (isAsciiDigit(text[i - 1]) && isPoint(text[i]) && text[i + 1] == ' ' &&
            isAsciiDigit(text[i + 2]) && holdsAmount(text)) {
            return true;
        }
    }
    // Such as "O.55" and "1.B3".
    for (std::size_t i = 1; i + 1 < text.size(); ++i) {
        if (!isPoint(text[i])) continue;
        if (isAsciiLetter(text[i - 1]) && isAsciiDigit(text[i + 1])) return true;
        if (isAsciiDigit(text[i - 1]) && isAsciiLetter(text[i + 1])) return true;
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
