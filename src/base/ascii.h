#pragma once

#include <algorithm>
#include <string>
#include <string_view>

// ASCII characters, independent of the locale.
namespace tandrel {

constexpr bool isAsciiDigit(char c) { return c >= '0' && c <= '9'; }
constexpr bool isAsciiLetter(char c) { return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z'); }
constexpr char asciiLower(char c) { return c >= 'A' && c <= 'Z' ? static_cast<char>(c + 32) : c; }

// The value of a hexadecimal digit, -1 for anything else.
constexpr int hexDigitValue(char c) {
    if (isAsciiDigit(c)) return c - '0';
    const char lower = asciiLower(c);
    return lower >= 'a' && lower <= 'f' ? lower - 'a' + 10 : -1;
}

inline std::string asciiLowered(std::string_view text) {
    std::string lowered(text);
    std::ranges::transform(lowered, lowered.begin(), asciiLower);
    return lowered;
}

constexpr bool equalsIgnoringCase(std::string_view a, std::string_view b) {
    return std::ranges::equal(a, b, {}, asciiLower, asciiLower);
}

constexpr std::string_view asciiTrimmed(std::string_view text) {
    constexpr std::string_view kSpaces = " \t\n\v\f\r";
    const std::size_t first = text.find_first_not_of(kSpaces);
    if (first == std::string_view::npos) return {};
    return text.substr(first, text.find_last_not_of(kSpaces) - first + 1);
}

}  // namespace tandrel
