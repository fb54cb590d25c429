#include "base/base64.h"

#include <string_view>

namespace tandrel {

std::string base64(const Bytes& bytes) {
    constexpr std::string_view digits =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789+/";
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

}  // namespace tandrel
