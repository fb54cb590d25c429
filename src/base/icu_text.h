#pragma once

#include <string>
#include <string_view>

#include <unicode/unistr.h>

// UTF-8, as everything here holds its texts, to and from ICU's UTF-16.
namespace tandrel {

inline icu::UnicodeString wide(std::string_view text) {
    return icu::UnicodeString::fromUTF8({text.data(), static_cast<std::int32_t>(text.size())});
}

inline std::string narrow(const icu::UnicodeString& text) {
    std::string result;
    text.toUTF8String(result);
    return result;
}

}  // namespace tandrel
