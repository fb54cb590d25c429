#pragma once

#include <array>
#include <compare>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace tandrel {

// A UUID (RFC 9562) as 16 bytes in network order.
class Uuid {
 public:
    Uuid() = default;
    explicit Uuid(std::array<std::uint8_t, 16> bytes) : bytes_(bytes) {}

    // Reads the 8-4-4-4-12 form in either case; nothing else.
    static std::optional<Uuid> parse(std::string_view text);

    // Version 5: always the same one for a name within a name space.
    static Uuid ofName(const Uuid& nameSpace, std::string_view name);

    // The 8-4-4-4-12 form in upper case.
    std::string text() const;
    const std::array<std::uint8_t, 16>& bytes() const { return bytes_; }

    auto operator<=>(const Uuid&) const = default;

 private:
    std::array<std::uint8_t, 16> bytes_{};
};

}  // namespace tandrel

template <>
struct std::hash<tandrel::Uuid> {
    std::size_t operator()(const tandrel::Uuid& uuid) const noexcept {
        return std::hash<std::string_view>{}(
            {reinterpret_cast<const char*>(uuid.bytes().data()), uuid.bytes().size()});
    }
};
