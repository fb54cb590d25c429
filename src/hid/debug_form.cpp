#include "hid/debug_form.h"

#include <cstdint>

#include <fmt/format.h>

namespace tandrel {
namespace {

constexpr std::uint8_t kDelete = 0x7F;

bool isContinuation(char byte) { return (static_cast<std::uint8_t>(byte) & 0xC0) == 0x80; }

// C1 control characters (U+0080 to U+009F) are the only ones that begin with C2 and go on below A0.
bool isC1(std::string_view text) {
    return text.size() >= 2 && static_cast<std::uint8_t>(text[0]) == 0xC2 &&
           static_cast<std::uint8_t>(text[1]) < 0xA0;
}

std::string escapedControl(std::uint8_t code) {
    switch (code) {
        case '\n':
            return "\\n";
        case '\t':
            return "\\t";
        case '\r':
            return "\\r";
        case '\0':
            return "\\0";
        default:
            return fmt::format("\\u{{{:02X}}}", code);
    }
}

std::string_view shortened(std::string_view text) {
    if (text.size() <= kLongestDebugForm) return text;
    std::size_t end = kLongestDebugForm;
    while (end > 0 && isContinuation(text[end])) --end;
    return text.substr(0, end);
}

}  // namespace

std::string debugForm(std::string_view character) {
    std::string result = "\"";
    for (std::string_view rest = shortened(character); !rest.empty(); rest.remove_prefix(1)) {
        const auto byte = static_cast<std::uint8_t>(rest[0]);
        if (isC1(rest)) {
            rest.remove_prefix(1);
            result += escapedControl(static_cast<std::uint8_t>(rest[0]));
        } else if (byte < ' ' || byte == kDelete) {
            result += escapedControl(byte);
        } else {
            if (byte == '"' || byte == '\\') result += '\\';
            result += rest[0];
        }
    }
    return result + '"';
}

}  // namespace tandrel
