#pragma once

#include <cstdint>
#include <limits>
#include <string_view>

#include "base/ascii.h"

// The block of lines before a message's body, without the blank line that ends it.
namespace tandrel {

// What ends the head.
inline constexpr std::string_view kBlankLine = "\r\n\r\n";

inline std::string_view firstLine(std::string_view head) {
    return head.substr(0, head.find("\r\n"));
}

// Calls `use(name, value)` for every header in order: the name as sent (compare it without regard
// to case), the value trimmed. Lines without ":" are skipped.
template <typename Use>
void forEachHeader(std::string_view head, Use&& use) {
    std::size_t end = head.find("\r\n");
    while (end != std::string_view::npos) {
        head.remove_prefix(end + 2);
        end = head.find("\r\n");
        const std::string_view line = head.substr(0, end);
        const std::size_t colon = line.find(':');
        if (colon == std::string_view::npos) continue;
        use(line.substr(0, colon), asciiTrimmed(line.substr(colon + 1)));
    }
}

inline constexpr std::uint64_t kEndlessLength = std::numeric_limits<std::uint64_t>::max() / 4;

// A Content-Length value as a number of bytes. What is not a decimal integer and what is negative
// counts as 0; what is larger than kEndlessLength counts as that, so that sums cannot overflow.
inline std::uint64_t parseContentLength(std::string_view value) {
    const bool negative = value.starts_with('-');
    if (negative || value.starts_with('+')) value.remove_prefix(1);
    std::uint64_t length = 0;
    for (const char c : value) {
        if (!isAsciiDigit(c)) return 0;
        if (length < kEndlessLength / 16)
            length = length * 10 + static_cast<std::uint64_t>(c - '0');
        else
            length = kEndlessLength;
    }
    return negative ? 0 : length;
}

}  // namespace tandrel
