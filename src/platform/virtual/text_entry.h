#pragma once

#include <cstdint>
#include <string>
#include <string_view>

namespace tandrel {

inline constexpr std::size_t kLongestEntry = 10'000;  // bytes; what goes beyond is not taken

// Keys by their usage on the Keyboard/Keypad page.
inline constexpr std::uint16_t kReturnKey = 0x28;
inline constexpr std::uint16_t kEscapeKey = 0x29;
inline constexpr std::uint16_t kBackspaceKey = 0x2A;
inline constexpr std::uint16_t kSpaceKey = 0x2C;
inline constexpr std::uint16_t kHKey = 0x0B;

// Does to the text what a key does at its end: adds the key's text, or takes the last
// user-perceived character away for Backspace.
void enterKey(std::string& entry, std::uint16_t usage, std::string_view keyText);

}  // namespace tandrel
