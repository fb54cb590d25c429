#include "platform/linux/portal_desktop_settings.h"

#include <sdbus-c++/sdbus-c++.h>

namespace tandrel {
namespace {

constexpr const char* kPortalService = "org.freedesktop.portal.Desktop";
constexpr const char* kPortalPath = "/org/freedesktop/portal/desktop";
constexpr const char* kPortalInterface = "org.freedesktop.portal.Settings";
// The bus may have to start the portal first.
constexpr std::chrono::seconds kLongestPortalCall{1};

constexpr std::uint32_t kPrefersDark = 1;
constexpr std::uint32_t kPrefersLight = 2;

}  // namespace

ColorPreference PortalDesktopSettings::colorPreference() {
    try {
        const auto portal =
            sdbus::createProxy(sdbus::createSessionBusConnection(), kPortalService, kPortalPath);
        sdbus::Variant answer;
        portal->callMethod("Read")
            .onInterface(kPortalInterface)
            .withTimeout(kLongestPortalCall)
            .withArguments(std::string("org.freedesktop.appearance"), std::string("color-scheme"))
            .storeResultsTo(answer);
        // This method wraps the value once more; some portals do not.
        if (answer.containsValueOfType<sdbus::Variant>()) answer = answer.get<sdbus::Variant>();
        const auto value = answer.get<std::uint32_t>();
        if (value == kPrefersDark) return ColorPreference::dark;
        return value == kPrefersLight ? ColorPreference::light : ColorPreference::none;
    } catch (const sdbus::Error&) {  // no bus, no portal, or another type of value
        return ColorPreference::none;
    }
}

}  // namespace tandrel
