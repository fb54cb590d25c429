#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <string_view>

namespace tandrel {

// The reports of the device, by the report id of their collection.
enum class ReportID : std::uint8_t {
    keyboard = 1,
    absolutePointer = 2,
    relativeMouse = 3,
    consumer = 4
};

inline constexpr std::array kReportIDs = {ReportID::keyboard, ReportID::absolutePointer,
                                          ReportID::relativeMouse, ReportID::consumer};

// None for any byte but 1 to 4.
std::optional<ReportID> parseReportID(std::uint8_t raw);

// "keyboard", "absolutePointer", "relativeMouse", "consumer"
std::string_view name(ReportID id);

// Bytes of an input report of this id, without a leading report id: over GATT the characteristic
// that carries a report tells its id.
constexpr std::size_t reportLength(ReportID id) {
    switch (id) {
        case ReportID::keyboard:
            return 8;
        case ReportID::absolutePointer:
            return 5;
        case ReportID::relativeMouse:
            return 4;
        case ReportID::consumer:
            return 2;
    }
    return 0;
}

// The report descriptor (Device Class Definition for HID 1.11, 6.2.2; usages from the HID Usage
// Tables): one device that is a keyboard, a pointer with screen coordinates, a relative mouse and a
// media remote.
namespace HIDReportMap {

// The largest X or Y of the absolute pointer.
inline constexpr int absoluteMax = 32767;

// clang-format off
inline constexpr auto keyboard = std::to_array<std::uint8_t>({
    0x05, 0x01,            // Usage Page (Generic Desktop)
    0x09, 0x06,            // Usage (Keyboard)
    0xA1, 0x01,            // Collection (Application)
    0x85, 0x01,            //   Report ID (1)
    0x05, 0x07,            //   Usage Page (Keyboard/Keypad)
    0x19, 0xE0,            //   Usage Minimum (Left Control)
    0x29, 0xE7,            //   Usage Maximum (Right GUI)
    0x15, 0x00,            //   Logical Minimum (0)
    0x25, 0x01,            //   Logical Maximum (1)
    0x75, 0x01,            //   Report Size (1)
    0x95, 0x08,            //   Report Count (8)
    0x81, 0x02,            //   Input (Data, Variable, Absolute): modifiers
    0x95, 0x01,            //   Report Count (1)
    0x75, 0x08,            //   Report Size (8)
    0x81, 0x01,            //   Input (Constant): reserved byte
    0x95, 0x06,            //   Report Count (6)
    0x75, 0x08,            //   Report Size (8)
    0x15, 0x00,            //   Logical Minimum (0)
    0x25, 0x65,            //   Logical Maximum (101)
    0x05, 0x07,            //   Usage Page (Keyboard/Keypad)
    0x19, 0x00,            //   Usage Minimum (0)
    0x29, 0x65,            //   Usage Maximum (101)
    0x81, 0x00,            //   Input (Data, Array, Absolute): six key slots
    0x95, 0x05,            //   Report Count (5)
    0x75, 0x01,            //   Report Size (1)
    0x05, 0x08,            //   Usage Page (LEDs)
    0x19, 0x01,            //   Usage Minimum (Num Lock)
    0x29, 0x05,            //   Usage Maximum (Kana)
    0x91, 0x02,            //   Output (Data, Variable, Absolute): LEDs
    0x95, 0x01,            //   Report Count (1)
    0x75, 0x03,            //   Report Size (3)
    0x91, 0x01,            //   Output (Constant): padding
    0xC0,                  // End Collection
});
static_assert(keyboard.size() == 65);

inline constexpr auto absolutePointer = std::to_array<std::uint8_t>({
    0x05, 0x01,            // Usage Page (Generic Desktop)
    0x09, 0x02,            // Usage (Mouse)
    0xA1, 0x01,            // Collection (Application)
    0x85, 0x02,            //   Report ID (2)
    0x09, 0x01,            //   Usage (Pointer)
    0xA1, 0x00,            //   Collection (Physical)
    0x05, 0x09,            //     Usage Page (Button)
    0x19, 0x01,            //     Usage Minimum (Button 1)
    0x29, 0x03,            //     Usage Maximum (Button 3)
    0x15, 0x00,            //     Logical Minimum (0)
    0x25, 0x01,            //     Logical Maximum (1)
    0x95, 0x03,            //     Report Count (3)
    0x75, 0x01,            //     Report Size (1)
    0x81, 0x02,            //     Input (Data, Variable, Absolute): buttons
    0x95, 0x01,            //     Report Count (1)
    0x75, 0x05,            //     Report Size (5)
    0x81, 0x01,            //     Input (Constant): padding
    0x05, 0x01,            //     Usage Page (Generic Desktop)
    0x09, 0x30,            //     Usage (X)
    0x09, 0x31,            //     Usage (Y)
    0x16, 0x00, 0x00,      //     Logical Minimum (0)
    0x26, 0xFF, 0x7F,      //     Logical Maximum (32767)
    0x75, 0x10,            //     Report Size (16)
    0x95, 0x02,            //     Report Count (2)
    0x81, 0x02,            //     Input (Data, Variable, Absolute): X and Y
    0xC0,                  //   End Collection
    0xC0,                  // End Collection
});
static_assert(absolutePointer.size() == 54);

inline constexpr auto relativeMouse = std::to_array<std::uint8_t>({
    0x05, 0x01,            // Usage Page (Generic Desktop)
    0x09, 0x02,            // Usage (Mouse)
    0xA1, 0x01,            // Collection (Application)
    0x85, 0x03,            //   Report ID (3)
    0x09, 0x01,            //   Usage (Pointer)
    0xA1, 0x00,            //   Collection (Physical)
    0x05, 0x09,            //     Usage Page (Button)
    0x19, 0x01,            //     Usage Minimum (Button 1)
    0x29, 0x03,            //     Usage Maximum (Button 3)
    0x15, 0x00,            //     Logical Minimum (0)
    0x25, 0x01,            //     Logical Maximum (1)
    0x95, 0x03,            //     Report Count (3)
    0x75, 0x01,            //     Report Size (1)
    0x81, 0x02,            //     Input (Data, Variable, Absolute): buttons
    0x95, 0x01,            //     Report Count (1)
    0x75, 0x05,            //     Report Size (5)
    0x81, 0x01,            //     Input (Constant): padding
    0x05, 0x01,            //     Usage Page (Generic Desktop)
    0x09, 0x30,            //     Usage (X)
    0x09, 0x31,            //     Usage (Y)
    0x09, 0x38,            //     Usage (Wheel)
    0x15, 0x81,            //     Logical Minimum (-127)
    0x25, 0x7F,            //     Logical Maximum (127)
    0x75, 0x08,            //     Report Size (8)
    0x95, 0x03,            //     Report Count (3)
    0x81, 0x06,            //     Input (Data, Variable, Relative): dx, dy, wheel
    0xC0,                  //   End Collection
    0xC0,                  // End Collection
});
static_assert(relativeMouse.size() == 54);

inline constexpr auto consumer = std::to_array<std::uint8_t>({
    0x05, 0x0C,            // Usage Page (Consumer)
    0x09, 0x01,            // Usage (Consumer Control)
    0xA1, 0x01,            // Collection (Application)
    0x85, 0x04,            //   Report ID (4)
    0x15, 0x00,            //   Logical Minimum (0)
    0x26, 0xFF, 0x03,      //   Logical Maximum (0x3FF)
    0x19, 0x00,            //   Usage Minimum (0)
    0x2A, 0xFF, 0x03,      //   Usage Maximum (0x3FF)
    0x75, 0x10,            //   Report Size (16)
    0x95, 0x01,            //   Report Count (1)
    0x81, 0x00,            //   Input (Data, Array, Absolute): one usage
    0xC0,                  // End Collection
});
static_assert(consumer.size() == 25);
// clang-format on

// The four collections in the order of their report ids: what the Report Map characteristic holds.
inline constexpr auto descriptor = [] {
    std::array<std::uint8_t,
               keyboard.size() + absolutePointer.size() + relativeMouse.size() + consumer.size()>
        all{};
    std::size_t at = 0;
    const auto append = [&](const auto& part) {
        for (const std::uint8_t byte : part) all[at++] = byte;
    };
    append(keyboard);
    append(absolutePointer);
    append(relativeMouse);
    append(consumer);
    return all;
}();
static_assert(descriptor.size() == 198);

}  // namespace HIDReportMap
}  // namespace tandrel
