#include "base/base64.h"

#include <array>
#include <cstdint>

namespace tandrel {
namespace {

constexpr std::string_view digits =
    "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";

// The value of each byte as a digit, and what marks one that is none.
constexpr unsigned kNoDigit = 64;
constexpr std::array<std::uint8_t, 256> kValues = [] {
    std::array<std::uint8_t, 256> values{};
    values.fill(kNoDigit);
    for (std::size_t i = 0; i < digits.size(); ++i) {
        values[static_cast<unsigned char>(digits[i])] = static_cast<std::uint8_t>(i);
    }
    return values;
}();

}  // namespace

std::string base64(const Bytes& bytes) {
    std::string text((bytes.size() + 2) / 3 * 4, '=');
    std::size_t to = 0;
    std::size_t from = 0;
    for (; from + 2 < bytes.size(); from += 3) {
        const unsigned group = bytes[from] << 16U | bytes[from + 1] << 8U | bytes[from + 2];
        text[to++] = digits[group >> 18U];
        text[to++] = digits[group >> 12U & 63U];
        text[to++] = digits[group >> 6U & 63U];
        text[to++] = digits[group & 63U];
    }
    if (const std::size_t rest = bytes.size() - from; rest > 0) {
        const unsigned group = bytes[from] << 16U | (rest > 1 ? bytes[from + 1] << 8U : 0U);
        text[to++] = digits[group >> 18U];
        text[to++] = digits[group >> 12U & 63U];
        if (rest > 1) text[to++] = digits[group >> 6U & 63U];
    }
    return text;
}

std::optional<Bytes> fromBase64(std::string_view text) {
    if (text.size() % 4 != 0) return std::nullopt;
    std::size_t padding = 0;
    while (padding < 2 && text.ends_with('=')) {
        text.remove_suffix(1);
        ++padding;
    }
    Bytes bytes;
    bytes.reserve(text.size() / 4 * 3 + 2);
    unsigned bits = 0;
    int held = 0;
    for (const char c : text) {
        const unsigned value = kValues[static_cast<unsigned char>(c)];
        if (value == kNoDigit) return std::nullopt;
        bits = bits << 6U | value;
        held += 6;
        if (held < 8) continue;
        held -= 8;
        bytes.push_back(static_cast<std::uint8_t>(bits >> static_cast<unsigned>(held)));
        bits &= (1U << static_cast<unsigned>(held)) - 1;
    }
    return bits == 0 ? std::optional(std::move(bytes)) : std::nullopt;
}

}  // namespace tandrel
