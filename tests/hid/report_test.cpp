#include "hid/report.h"

#include <limits>

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

namespace tandrel {
namespace {

std::string text(const Report& report) {
    return fmt::format("{}: {:02x}", static_cast<int>(report.id), fmt::join(report.bytes(), " "));
}

TEST(Report, PutsThePointerWhereAsked) {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr double kHalfCount = 0.5 / 32767;
    const std::tuple<const char*, ScreenPoint, const char*, ScreenPoint> rows[] = {
        {"top left", {0, 0}, "2: 00 00 00 00 00", {0, 0}},
        {"bottom right", {1, 1}, "2: 00 ff 7f ff 7f", {1, 1}},
        {"middle, a half, goes away from zero", {0.5, 0.5}, "2: 00 00 40 00 40", {0.5, 0.5}},
        {"x and y apart", {0.25, 0.75}, "2: 00 00 20 ff 5f", {0.25, 0.75}},
        {"half a count from the left", {kHalfCount, 0}, "2: 00 01 00 00 00", {kHalfCount, 0}},
        {"before the edge", {-0.1, -1e300}, "2: 00 00 00 00 00", {0, 0}},
        {"beyond the edge", {1.1, 1e300}, "2: 00 ff 7f ff 7f", {1, 1}},
        {"infinite", {kInfinity, -kInfinity}, "2: 00 ff 7f 00 00", {1, 0}},
        {"not a number", {kNan, kNan}, "2: 00 ff 7f ff 7f", {1, 1}},
    };
    for (const auto& [name, place, bytes, inside] : rows) {
        EXPECT_EQ(text(absolutePointerReport(Button::up, place)), bytes) << name;
        EXPECT_EQ(insideScreen(place), inside) << name;
    }
    EXPECT_EQ(text(absolutePointerReport(Button::down, {0, 1})), "2: 01 00 00 ff 7f");
}

TEST(Report, LaysOutTheOthers) {
    EXPECT_EQ(text(keyboardReport({.code = 0x28, .modifiers = 8})), "1: 08 00 28 00 00 00 00 00");
    EXPECT_EQ(text(relativeMouseReport(Button::up, {-127, 5})), "3: 00 81 05 00");
    EXPECT_EQ(text(relativeMouseReport(Button::down)), "3: 01 00 00 00");
    EXPECT_EQ(text(consumerReport(0x0223)), "4: 23 02");
    EXPECT_EQ(text(releasedReport(ReportID::absolutePointer)), "2: 00 00 00 00 00");
}

}  // namespace
}  // namespace tandrel
