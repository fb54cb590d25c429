#include "base/regex.h"

#include <cstdio>
#include <cstdlib>

#include <unicode/regex.h>
#include <unicode/utf16.h>
#include <unicode/utf8.h>

#include "base/icu_text.h"

namespace tandrel {
namespace {

// In ICU's own steps, about a millisecond each.
constexpr std::int32_t kMostSteps = 1000;

// Where in the UTF-8 text its first `units` UTF-16 units end. A bad byte sequence stands for one
// unit, U+FFFD, as it does in the conversion.
std::size_t bytesOfUnits(std::string_view text, std::int32_t units) {
    const auto* bytes = reinterpret_cast<const std::uint8_t*>(text.data());
    const auto length = static_cast<std::int32_t>(text.size());
    std::int32_t at = 0;
    for (std::int32_t seen = 0; seen < units && at < length;) {
        UChar32 point = 0;
        U8_NEXT(bytes, at, length, point);
        seen += point < 0 ? 1 : U16_LENGTH(point);
    }
    return static_cast<std::size_t>(at);
}

}  // namespace

struct Regex::Compiled {
    std::unique_ptr<icu::RegexPattern> pattern;

    // ICU keeps a reference to `text`, which must outlive the matcher.
    std::unique_ptr<icu::RegexMatcher> matcher(const icu::UnicodeString& text) const {
        UErrorCode status = U_ZERO_ERROR;
        std::unique_ptr<icu::RegexMatcher> result(pattern->matcher(text, status));
        if (result) result->setTimeLimit(kMostSteps, status);
        return U_FAILURE(status) ? nullptr : std::move(result);
    }
};

Regex::Regex(std::string_view pattern, Case letterCase) : compiled_(std::make_unique<Compiled>()) {
    UErrorCode status = U_ZERO_ERROR;
    UParseError where{};
    std::uint32_t flags = 0;
    if (letterCase == Case::insensitive) flags |= UREGEX_CASE_INSENSITIVE;
    compiled_->pattern.reset(icu::RegexPattern::compile(wide(pattern), flags, where, status));
    if (U_FAILURE(status)) {
        std::fprintf(stderr, "pattern does not compile (%s at %d): %.*s\n", u_errorName(status),
                     where.offset, static_cast<int>(pattern.size()), pattern.data());
        std::abort();
    }
}

Regex::~Regex() = default;

bool Regex::has(std::string_view text) const {
    const icu::UnicodeString source = wide(text);
    const auto matcher = compiled_->matcher(source);
    return matcher && matcher->find();
}

std::optional<std::string> Regex::first(std::string_view text) const {
    auto match = firstMatch(text);
    if (!match) return std::nullopt;
    return std::move(match->text);
}

std::optional<Regex::Match> Regex::firstMatch(std::string_view text) const {
    const icu::UnicodeString source = wide(text);
    const auto matcher = compiled_->matcher(source);
    if (!matcher || !matcher->find()) return std::nullopt;
    UErrorCode status = U_ZERO_ERROR;
    const std::int32_t start = matcher->start(status);
    const std::int32_t end = matcher->end(status);
    return Match{bytesOfUnits(text, start), bytesOfUnits(text, end),
                 narrow(source.tempSubStringBetween(start, end))};
}

std::vector<std::string> Regex::all(std::string_view text, int group) const {
    const icu::UnicodeString source = wide(text);
    const auto matcher = compiled_->matcher(source);
    std::vector<std::string> result;
    while (matcher && matcher->find()) {
        UErrorCode status = U_ZERO_ERROR;
        const std::int32_t start = matcher->start(group, status);
        if (U_FAILURE(status) || start < 0) continue;
        result.push_back(narrow(source.tempSubStringBetween(start, matcher->end(group, status))));
    }
    return result;
}

std::string Regex::replaceAll(std::string_view text, std::string_view replacement) const {
    const icu::UnicodeString source = wide(text);
    const icu::UnicodeString with = wide(replacement);
    const auto matcher = compiled_->matcher(source);
    icu::UnicodeString result;
    std::int32_t copied = 0;
    while (matcher && matcher->find()) {
        UErrorCode status = U_ZERO_ERROR;
        result.append(source, copied, matcher->start(status) - copied);
        result.append(with);
        copied = matcher->end(status);
    }
    result.append(source, copied, source.length() - copied);
    return narrow(result);
}

}  // namespace tandrel
