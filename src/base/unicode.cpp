#include "base/unicode.h"

#include <algorithm>
#include <memory>

#include <unicode/brkiter.h>
#include <unicode/normalizer2.h>
#include <unicode/uchar.h>
#include <unicode/utf8.h>

#include "base/icu_text.h"

namespace tandrel {
namespace {

// The thread's own, since making one takes longer than walking through a line. None for want of
// memory.
icu::BreakIterator* graphemeIterator() {
    thread_local const auto iterator = [] {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::BreakIterator> made(
            icu::BreakIterator::createCharacterInstance(icu::Locale::getRoot(), status));
        return U_FAILURE(status) ? nullptr : std::move(made);
    }();
    return iterator.get();
}

// Calls `visit(start, end)` for each grapheme cluster, in UTF-16 units, until it returns false.
// `visit` does not walk through another text.
template <typename Visit>
void eachGrapheme(const icu::UnicodeString& text, Visit visit) {
    icu::BreakIterator* const iterator = graphemeIterator();
    if (!iterator) return;
    iterator->setText(text);
    std::int32_t start = iterator->first();
    for (std::int32_t end = iterator->next(); end != icu::BreakIterator::DONE;
         start = end, end = iterator->next()) {
        if (!visit(start, end)) return;
    }
}

}  // namespace

bool isAscii(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return static_cast<unsigned char>(c) < 0x80; });
}

bool isUtf8(std::string_view text) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    for (std::int32_t i = 0; i < length;) {
        UChar32 point = 0;
        U8_NEXT(bytes, i, length, point);
        if (point < 0) return false;
    }
    return true;
}

std::vector<std::string> graphemes(std::string_view text) {
    const icu::UnicodeString source = wide(text);
    std::vector<std::string> result;
    eachGrapheme(source, [&](std::int32_t start, std::int32_t end) {
        result.push_back(narrow(source.tempSubStringBetween(start, end)));
        return true;
    });
    return result;
}

std::size_t graphemeCount(std::string_view text) {
    // Of ASCII, only a carriage return with its line feed are one.
    if (isAscii(text) && !text.contains('\r')) return text.size();
    std::size_t count = 0;
    eachGrapheme(wide(text), [&](std::int32_t, std::int32_t) {
        ++count;
        return true;
    });
    return count;
}

std::string firstGraphemes(std::string_view text, std::size_t count) {
    const icu::UnicodeString source = wide(text);
    std::int32_t cut = 0;
    std::size_t seen = 0;
    eachGrapheme(source, [&](std::int32_t, std::int32_t end) {
        if (seen == count) return false;
        cut = end;
        ++seen;
        return true;
    });
    return narrow(source.tempSubStringBetween(0, cut));
}

std::string composed(std::string_view text) {
    UErrorCode status = U_ZERO_ERROR;
    const icu::Normalizer2* form = icu::Normalizer2::getNFCInstance(status);
    if (U_FAILURE(status)) return std::string(text);
    const icu::UnicodeString result = form->normalize(wide(text), status);
    return U_FAILURE(status) ? std::string(text) : narrow(result);
}

std::string lowerCased(std::string_view text) {
    icu::UnicodeString source = wide(text);
    return narrow(source.toLower(icu::Locale::getRoot()));
}

std::string trimmed(std::string_view text) {
    const icu::UnicodeString source = wide(text);
    std::int32_t start = 0;
    std::int32_t end = source.length();
    const auto isSpace = [&](std::int32_t i) { return u_isUWhiteSpace(source.char32At(i)) != 0; };
    while (start < end && isSpace(start)) ++start;
    while (end > start && isSpace(end - 1)) --end;
    return narrow(source.tempSubStringBetween(start, end));
}

}  // namespace tandrel
