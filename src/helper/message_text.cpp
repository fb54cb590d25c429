#include "helper/message_text.h"

#include <string_view>

namespace tandrel {
namespace {

bool needsCare(char c) {
    const auto byte = static_cast<unsigned char>(c);
    return byte < 0x20 || byte >= 0x7F || byte == '"' || byte == '\\';
}

// Whether the text stands in JSON as it is. Blocks of a fixed size let the compiler look at many
// bytes at once.
bool isPlain(std::string_view text) {
    constexpr std::size_t kBlock = 64;
    for (; text.size() >= kBlock; text.remove_prefix(kBlock)) {
        bool found = false;
        for (std::size_t i = 0; i < kBlock; ++i) found |= needsCare(text[i]);
        if (found) return false;
    }
    for (const char c : text) {
        if (needsCare(c)) return false;
    }
    return true;
}

void append(std::string& text, const Json& value);

void appendText(std::string& text, const std::string& string) {
    if (!isPlain(string)) {
        text += dumpJson(string);
        return;
    }
    text += '"';
    text += string;
    text += '"';
}

// No deeper than the value was nested when it was parsed or built.
void append(std::string& text, const Json& value) {
    if (value.is_string()) return appendText(text, value.get_ref<const std::string&>());
    if (!value.is_structured()) {
        text += dumpJson(value);
        return;
    }
    text += value.is_object() ? '{' : '[';
    bool isFirst = true;
    for (const auto& [key, member] : value.items()) {
        if (!isFirst) text += ',';
        isFirst = false;
        if (value.is_object()) {
            appendText(text, key);
            text += ':';
        }
        append(text, member);
    }
    text += value.is_object() ? '}' : ']';
}

}  // namespace

std::string messageText(const Json& value) {
    std::string text;
    append(text, value);
    return text;
}

}  // namespace tandrel
