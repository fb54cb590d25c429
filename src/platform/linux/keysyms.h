#pragma once

#include <cstdint>
#include <optional>
#include <string_view>
#include <vector>

// The X protocol's numbers for keys (X11 protocol, appendix A).
namespace tandrel {

// The key of a character, or of a name such as "return", "tab", "escape", "left" or "f5".
std::optional<std::uint32_t> keysymNamed(std::string_view name);
// Of "cmd", "shift", "alt" (or "option") and "ctrl" (or "control").
std::optional<std::uint32_t> modifierNamed(std::string_view name);
// One for each character, a line break being Return. Bytes that are not UTF-8 are left out.
std::vector<std::uint32_t> keysymsOf(std::string_view text);

}  // namespace tandrel
