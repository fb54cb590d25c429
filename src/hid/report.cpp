#include "hid/report.h"

#include <algorithm>
#include <cmath>

namespace tandrel {
namespace {

constexpr std::uint8_t lowByte(unsigned value) { return static_cast<std::uint8_t>(value & 0xFF); }
constexpr std::uint8_t highByte(unsigned value) { return static_cast<std::uint8_t>(value >> 8); }

// NaN compares false and so becomes the largest value.
double clamped(double value, double largest) {
    return std::max(value < largest ? value : largest, 0.0);
}

unsigned coordinate(double fraction) {
    constexpr double kMax = HIDReportMap::absoluteMax;
    return static_cast<unsigned>(clamped(std::round(fraction * kMax), kMax));
}

}  // namespace

Report keyboardReport(Keymap::Stroke held) {
    return {ReportID::keyboard, {held.modifiers, 0, held.code}};
}

Report absolutePointerReport(Button button, ScreenPoint place) {
    const unsigned x = coordinate(place.x);
    const unsigned y = coordinate(place.y);
    return {ReportID::absolutePointer,
            {static_cast<std::uint8_t>(button), lowByte(x), highByte(x), lowByte(y), highByte(y)}};
}

Report relativeMouseReport(Button button, Motion motion) {
    return {ReportID::relativeMouse,
            {static_cast<std::uint8_t>(button), static_cast<std::uint8_t>(motion.dx),
             static_cast<std::uint8_t>(motion.dy), 0}};
}

Report consumerReport(std::uint16_t usage) {
    return {ReportID::consumer, {lowByte(usage), highByte(usage)}};
}

Report releasedReport(ReportID id) { return {id, {}}; }

bool holdsDown(const Report& report) {
    switch (report.id) {
        case ReportID::keyboard:
        case ReportID::consumer:
            return std::ranges::any_of(report.bytes(), [](std::uint8_t byte) { return byte != 0; });
        case ReportID::relativeMouse:
            return report.storage[0] != 0;
        case ReportID::absolutePointer:
            return false;
    }
    return false;
}

bool movesRelatively(const Report& report) {
    return report.id == ReportID::relativeMouse &&
           (report.storage[1] != 0 || report.storage[2] != 0);
}

ScreenPoint insideScreen(ScreenPoint place) { return {clamped(place.x, 1), clamped(place.y, 1)}; }

}  // namespace tandrel
