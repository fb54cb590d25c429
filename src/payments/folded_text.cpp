#include "payments/folded_text.h"

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>

#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/uscript.h>
#include <unicode/uspoof.h>

#include "base/ascii.h"
#include "base/icu_text.h"
#include "base/unicode.h"

namespace tandrel::PaymentGuard {
namespace {

// ICU's data comes with the program; without it nothing could be judged.
template <typename T>
T* checked(T* value, UErrorCode status) {
    if (U_SUCCESS(status) && value) return value;
    std::fprintf(stderr, "Unicode data: %s\n", u_errorName(status));
    std::abort();
}

struct Tools {
    const icu::Normalizer2* plain;
    const icu::Normalizer2* caseless;
    const icu::Normalizer2* decomposed;
    const USpoofChecker* spoof;

    Tools() {
        UErrorCode status = U_ZERO_ERROR;
        plain = checked(icu::Normalizer2::getNFKCInstance(status), status);
        caseless = checked(icu::Normalizer2::getNFKCCasefoldInstance(status), status);
        decomposed = checked(icu::Normalizer2::getNFDInstance(status), status);
        spoof = checked(uspoof_open(&status), status);
    }
};

const Tools& tools() {
    static const Tools instance;
    return instance;
}

// What cannot be normalised, for want of memory, stays as it is.
icu::UnicodeString normalised(const icu::Normalizer2& form, const icu::UnicodeString& text) {
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString result = form.normalize(text, status);
    return U_SUCCESS(status) ? result : text;
}

icu::UnicodeString skeleton(const icu::UnicodeString& text) {
    UErrorCode status = U_ZERO_ERROR;
    icu::UnicodeString result;
    uspoof_getSkeletonUnicodeString(tools().spoof, 0, text, result, &status);
    return U_SUCCESS(status) ? result : text;
}

// What each ASCII character looks like: its skeleton, which goes character by character.
const std::array<std::string, 0x80>& asciiSkeletons() {
    static const std::array<std::string, 0x80> table = [] {
        std::array<std::string, 0x80> all;
        for (UChar32 c = 0; c < 0x80; ++c)
            all[static_cast<std::size_t>(c)] = narrow(skeleton(icu::UnicodeString(c)).foldCase());
        return all;
    }();
    return table;
}

bool isWordPart(UChar32 c) { return u_isalnum(c) || (U_GET_GC_MASK(c) & U_GC_M_MASK) != 0; }
bool isMark(UChar32 c) { return u_charType(c) == U_NON_SPACING_MARK; }

template <typename Each>
void forEach(const icu::UnicodeString& text, const Each& each) {
    for (std::int32_t i = 0; i < text.length(); i = text.moveIndex32(i, 1)) each(text.char32At(i));
}

icu::UnicodeString separateWords(const icu::UnicodeString& text) {
    icu::UnicodeString result;
    bool inWord = false;
    forEach(text, [&](UChar32 c) {
        const bool part = isWordPart(c);
        if (part && !inWord) result.append(u' ');
        if (part) result.append(c);
        inWord = part;
    });
    if (!result.isEmpty()) result.append(u' ');
    return result;
}

icu::UnicodeString withoutMarks(const icu::UnicodeString& text) {
    icu::UnicodeString result;
    forEach(normalised(*tools().decomposed, text), [&](UChar32 c) {
        if (!isMark(c)) result.append(c);
    });
    return result;
}

// The Latin spelling that a word of look-alikes passes itself off as; the word itself otherwise.
icu::UnicodeString latinSpelling(const icu::UnicodeString& word) {
    bool foreign = false;
    bool letters = false;
    bool digits = false;
    forEach(word, [&](UChar32 c) {
        UErrorCode status = U_ZERO_ERROR;
        if (u_isdigit(c) || c == U'|') digits = true;
        if (!u_isalpha(c)) return;
        letters = true;
        foreign = foreign || uscript_getScript(c, &status) != USCRIPT_LATIN;
    });
    if (!foreign && !(letters && digits)) return word;
    // A capital may look Latin where its small letter does not: Greek Β and β.
    for (const auto& form : {icu::UnicodeString(word).foldCase(), word}) {
        icu::UnicodeString spelled = skeleton(form);
        spelled.findAndReplace(u"rn", u"m").findAndReplace(u"O", u"o");
        spelled.findAndReplace(u"5", u"s").findAndReplace(u"3", u"e").findAndReplace(u"4", u"a");
        bool latin = true;
        forEach(spelled, [&](UChar32 c) { latin = latin && c < 0x80 && u_isalpha(c); });
        if (latin) return spelled;
    }
    return word;
}

icu::UnicodeString withLatinSpellings(const icu::UnicodeString& source) {
    icu::UnicodeString result;
    icu::UnicodeString word;
    forEach(source, [&](UChar32 c) {
        if (isWordPart(c) || c == U'|') {
            word.append(c);
            return;
        }
        result.append(latinSpelling(word)).append(c);
        word.remove();
    });
    return result.append(latinSpelling(word));
}

// An ASCII character that is no part of a word.
bool isSeparator(char c) {
    return static_cast<unsigned char>(c) < 0x80 && !isAsciiLetter(c) && !isAsciiDigit(c) &&
           c != '|';
}
bool isPlainWord(std::string_view word) { return std::ranges::all_of(word, isAsciiLetter); }

}  // namespace

std::string plain(std::string_view text) {
    if (isAscii(text)) return std::string(text);
    return narrow(normalised(*tools().plain, wide(text)));
}

std::string folded(std::string_view text) {
    const auto words = separateWords(normalised(*tools().caseless, wide(text)));
    if (words.isEmpty()) return "";
    const std::string letters = narrow(words);
    if (isAscii(letters)) {
        std::string looks;
        for (const char c : letters) looks += asciiSkeletons()[static_cast<unsigned char>(c)];
        return looks;
    }
    auto result = withoutMarks(skeleton(words));
    return narrow(result.foldCase());
}

std::string unmasked(std::string_view text) {
    const std::string source = plain(text);
    std::string result;
    result.reserve(source.size());
    for (std::size_t at = 0; at < source.size();) {
        if (isSeparator(source[at])) {
            result += source[at++];
            continue;
        }
        const auto word = std::find_if(source.begin() + static_cast<std::ptrdiff_t>(at),
                                       source.end(), isSeparator);
        const std::string_view piece(source.begin() + static_cast<std::ptrdiff_t>(at), word);
        result += isPlainWord(piece) ? std::string(piece) : narrow(withLatinSpellings(wide(piece)));
        at += piece.size();
    }
    return result;
}

std::string reversed(std::string_view text) {
    const auto characters = graphemes(text);
    std::string result;
    result.reserve(text.size());
    for (auto it = characters.rbegin(); it != characters.rend(); ++it) result += *it;
    return result;
}

}  // namespace tandrel::PaymentGuard
