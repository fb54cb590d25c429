#include "platform/linux/portal_desktop_settings.h"

#include <gtest/gtest.h>

#include "platform/linux/fake_portal.h"
#include "platform/linux/private_bus.h"

namespace tandrel {
namespace {

TEST(PortalDesktopSettings, TellWhichColoursThePersonPrefers) {
    PrivateBus bus;
    const EnvironmentVariable session("DBUS_SESSION_BUS_ADDRESS", bus.address());
    PortalDesktopSettings settings;
    EXPECT_EQ(settings.colorPreference(), ColorPreference::none) << "no portal";
    const std::tuple<const char*, std::optional<sdbus::Variant>, ColorPreference> rows[] = {
        {"no preference", FakePortal::wrapped(0), ColorPreference::none},
        {"dark", FakePortal::wrapped(1), ColorPreference::dark},
        {"light", FakePortal::wrapped(2), ColorPreference::light},
        {"dark, wrapped once", sdbus::Variant(std::uint32_t{1}), ColorPreference::dark},
        {"a number of the future", FakePortal::wrapped(77), ColorPreference::none},
        {"no number", sdbus::Variant(sdbus::Variant(std::string("dark"))), ColorPreference::none},
        {"no such setting", std::nullopt, ColorPreference::none},
    };
    for (const auto& [name, answer, expected] : rows) {
        const FakePortal portal(bus.address(), [&] {
            return answer ? *answer : throw sdbus::Error("test.NotFound", "no such setting");
        });
        EXPECT_EQ(settings.colorPreference(), expected) << name;
    }
    bus.stop();
    EXPECT_EQ(settings.colorPreference(), ColorPreference::none) << "no bus";
}

}  // namespace
}  // namespace tandrel
