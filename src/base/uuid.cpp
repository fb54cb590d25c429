#include "base/uuid.h"

#include <algorithm>
#include <vector>

#include "base/sha1.h"

namespace tandrel {
namespace {

constexpr std::string_view kShape = "xxxxxxxx-xxxx-xxxx-xxxx-xxxxxxxxxxxx";

int digitValue(char c) {
    if (c >= '0' && c <= '9') return c - '0';
    if (c >= 'a' && c <= 'f') return c - 'a' + 10;
    if (c >= 'A' && c <= 'F') return c - 'A' + 10;
    return -1;
}

}  // namespace

std::optional<Uuid> Uuid::parse(std::string_view text) {
    if (text.size() != kShape.size()) return std::nullopt;
    std::array<std::uint8_t, 16> bytes{};
    std::size_t nibble = 0;
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (kShape[i] == '-') {
            if (text[i] != '-') return std::nullopt;
            continue;
        }
        const int value = digitValue(text[i]);
        if (value < 0) return std::nullopt;
        auto& byte = bytes[nibble / 2];
        byte = static_cast<std::uint8_t>(byte << 4 | value);
        ++nibble;
    }
    return Uuid(bytes);
}

Uuid Uuid::ofName(const Uuid& nameSpace, std::string_view name) {
    std::vector<std::uint8_t> hashed(nameSpace.bytes_.begin(), nameSpace.bytes_.end());
    hashed.insert(hashed.end(), name.begin(), name.end());
    const auto digest = sha1(hashed);
    std::array<std::uint8_t, 16> bytes{};
    std::copy_n(digest.begin(), bytes.size(), bytes.begin());
    bytes[6] = static_cast<std::uint8_t>((bytes[6] & 0x0F) | 0x50);  // version
    bytes[8] = static_cast<std::uint8_t>((bytes[8] & 0x3F) | 0x80);  // variant
    return Uuid(bytes);
}

std::string Uuid::text() const {
    constexpr std::string_view digits = "0123456789ABCDEF";
    std::string text;
    std::size_t nibble = 0;
    for (const char c : kShape) {
        if (c == '-') {
            text += c;
            continue;
        }
        const std::uint8_t byte = bytes_[nibble / 2];
        text += digits[nibble % 2 == 0 ? byte >> 4 : byte & 0x0F];
        ++nibble;
    }
    return text;
}

}  // namespace tandrel
