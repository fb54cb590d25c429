#pragma once

#include <array>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tandrel {

// How a US English keyboard makes characters and keys: usages of the Keyboard/Keypad page (HID
// Usage Tables, 10) and modifier bits.
struct Keymap {
    struct Stroke {
        std::uint8_t code = 0;       // key usage
        std::uint8_t modifiers = 0;  // modifier bits

        bool operator==(const Stroke&) const = default;
    };

    struct Name {
        std::string_view name;  // lower case
        std::uint8_t value;
    };

    // The bit of Left Shift.
    static constexpr std::uint8_t shift = 2;

    // clang-format off
    // Modifier name -> bit; left-hand modifiers only.
    static constexpr auto modifiers = std::to_array<Name>({
        {"ctrl",    1},
        {"control", 1},
        {"shift",   2},
        {"alt",     4},
        {"option",  4},
        {"cmd",     8},
        {"command", 8},
    });

    // Key name -> usage. "delete" is the backspace key and "home" the keyboard's Home key, not the
    // phone's home gesture.
    static constexpr auto named = std::to_array<Name>({
        {"enter",     0x28}, {"right",         0x4F},
        {"return",    0x28}, {"left",          0x50},
        {"escape",    0x29}, {"down",          0x51},
        {"esc",       0x29}, {"up",            0x52},
        {"backspace", 0x2A}, {"forwarddelete", 0x4C},
        {"delete",    0x2A}, {"home",          0x4A},
        {"tab",       0x2B}, {"end",           0x4D},
        {"space",     0x2C}, {"pageup",        0x4B},
                             {"pagedown",      0x4E},
    });
    // clang-format on

    // The stroke that types one user-perceived character; none when a US keyboard has no such
    // character. Case counts; canonically equivalent forms of a character are the same.
    static std::optional<Stroke> stroke(std::string_view character);

    // The value of a lower-case name in one of the tables above.
    template <std::size_t count>
    static constexpr std::optional<std::uint8_t> find(const std::array<Name, count>& table,
                                                      std::string_view name) {
        for (const Name& row : table) {
            if (row.name == name) return row.value;
        }
        return std::nullopt;
    }
};

}  // namespace tandrel
