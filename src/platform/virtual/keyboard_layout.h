#pragma once

#include <cstdint>
#include <string_view>

#include "platform/virtual/scenario.h"

namespace tandrel {

enum class Shift { up, down };

// What the key produces on a phone set to this layout, as UTF-8; empty for a key that produces no
// text. Return gives a line feed, Tab a tab. `usage` as in HID Usage Tables, Keyboard/Keypad page.
std::string_view keyText(KeyboardLayout layout, std::uint16_t usage, Shift shift);

}  // namespace tandrel
