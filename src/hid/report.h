#pragma once

#include <array>
#include <cstdint>
#include <span>

#include "hid/keymap.h"
#include "hid/report_map.h"
#include "hid/screen_point.h"

namespace tandrel {

// One input report, as it goes over GATT: no leading report id, fields little-endian.
struct Report {
    ReportID id = ReportID::keyboard;
    std::array<std::uint8_t, 8> storage{};

    std::span<const std::uint8_t> bytes() const { return {storage.data(), reportLength(id)}; }
};

// Button 1, the only one that is ever pressed.
enum class Button : std::uint8_t { up = 0, down = 1 };

struct Motion {
    std::int8_t dx = 0;  // -127 to 127 counts
    std::int8_t dy = 0;
};

//  byte 0: modifiers    | RGUI RAlt RShift RCtrl | LGUI LAlt LShift LCtrl |
//  byte 1: reserved, 0
//  byte 2: key usage, 0 = none
//  bytes 3-7: further keys, always 0: one key at a time
Report keyboardReport(Keymap::Stroke held);

//  byte 0: buttons      | 0 0 0 0 0 | button 3, 2, 1 |
//  bytes 1-2: X, 0 at the left edge to 32767 at the right one
//  bytes 3-4: Y, 0 at the top to 32767 at the bottom
// A coordinate outside 0 to 1 goes to the edge, NaN to the far one.
Report absolutePointerReport(Button button, ScreenPoint place);

//  byte 0: buttons      | 0 0 0 0 0 | button 3, 2, 1 |
//  byte 1: dx, signed
//  byte 2: dy, signed
//  byte 3: wheel, signed, always 0
Report relativeMouseReport(Button button, Motion motion = {});

//  bytes 0-1: usage of the Consumer page, 0 = released
Report consumerReport(std::uint16_t usage);

// Everything of this report up: zeros.
Report releasedReport(ReportID id);

// Whether the report leaves a key, a button or a media key pressed. An absolute pointer report does
// not: what it says of the button only repeats the relative mouse, whose report ends the press.
bool holdsDown(const Report& report);

// Whether the report moves the pointer from wherever it is.
bool movesRelatively(const Report& report);

// The place that the absolute pointer report goes to, with coordinates inside 0 to 1.
ScreenPoint insideScreen(ScreenPoint place);

}  // namespace tandrel
