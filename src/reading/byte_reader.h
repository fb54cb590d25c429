#pragma once

#include <cstdint>
#include <cstring>
#include <span>
#include <string_view>

#include "base/result.h"

namespace tandrel {

// Takes little-endian values off the front of a byte sequence; running out is an error.
class ByteReader {
 public:
    explicit ByteReader(std::span<const std::uint8_t> bytes) : rest_(bytes) {}

    template <typename T>
    Result<T> read() {
        const auto bytes = TRY(take(sizeof(T)));
        T value;
        std::memcpy(&value, bytes.data(), sizeof(T));
        return value;
    }

    Result<std::span<const std::uint8_t>> take(std::size_t count) {
        if (count > rest_.size()) return fail("The file ends too early.");
        const auto taken = rest_.first(count);
        rest_ = rest_.subspan(count);
        return taken;
    }

    // A text preceded by its 32-bit length, at most `limit` bytes.
    Result<std::string_view> text(std::size_t limit) {
        const auto length = TRY(read<std::uint32_t>());
        if (length > limit) return fail("The file holds a text of impossible length.");
        const auto bytes = TRY(take(length));
        return std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size());
    }

 private:
    std::span<const std::uint8_t> rest_;
};

}  // namespace tandrel
