#pragma once

#include <cstdint>
#include <variant>

// What a keyboard and a pointer tell the phone they belong to.
namespace tandrel {

// A place on the screen as fractions of its width and height as it is held, from the top left.
struct ScreenFraction {
    double x = 0;
    double y = 0;

    bool operator==(const ScreenFraction&) const = default;
};

struct PointerTo {
    ScreenFraction to;
    bool operator==(const PointerTo&) const = default;
};
// Motion in mouse counts.
struct PointerBy {
    int dx = 0;
    int dy = 0;
    bool operator==(const PointerBy&) const = default;
};
enum class ButtonEvent { down, up };
// A key went down while these modifiers were held.
struct KeyEvent {
    std::uint16_t usage = 0;     // HID Usage Tables, page 0x07
    std::uint8_t modifiers = 0;  // bit n: usage 0xE0 + n
    bool operator==(const KeyEvent&) const = default;
};
// A consumer control was pressed.
struct ConsumerEvent {
    std::uint16_t usage = 0;  // HID Usage Tables, page 0x0C
    bool operator==(const ConsumerEvent&) const = default;
};

using InputEvent = std::variant<PointerTo, PointerBy, ButtonEvent, KeyEvent, ConsumerEvent>;

inline constexpr std::uint8_t kShiftKeys = 0x22;    // left and right
inline constexpr std::uint8_t kCommandKeys = 0x88;  // left and right GUI
inline constexpr std::uint16_t kAcHome = 0x223;     // AC Home, consumer page

}  // namespace tandrel
