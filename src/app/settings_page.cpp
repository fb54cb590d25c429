#include "app/settings_page.h"

#include <algorithm>
#include <array>
#include <set>

#include "base/unicode.h"

namespace tandrel {
namespace {

constexpr std::array<std::string_view, 4> kSearchWords = {
    "Top Hit",
    "Siri Suggestions",
    "Search Web",
    "Search in App",
};

constexpr std::array<std::string_view, 18> kSettingsRows = {
    "General",
    "Accessibility",
    "AssistiveTouch",
    "Bluetooth",
    "Wi-Fi",
    "Wi\u2011Fi",
    "Airplane Mode",
    "Privacy & Security",
    "Display & Brightness",
    "Battery",
    "Notifications",
    "Screen Time",
    "Apple Account",
    "Control Center",
    "Sounds & Haptics",
    "Touch",
    "Cellular",
    "Mobile Service",
};

}  // namespace

bool looksLikeSettings(const std::vector<std::string>& texts) {
    std::set<std::string> rows;
    for (const std::string_view row : kSettingsRows) rows.insert(lowerCased(row));
    std::set<std::string> found;
    for (const std::string& text : texts) {
        const std::string lower = lowerCased(text);
        const bool isSearch = std::ranges::any_of(kSearchWords, [&](std::string_view words) {
            return lower.find(lowerCased(words)) != std::string::npos;
        });
        if (isSearch) return false;
        if (rows.contains(lower)) found.insert(lower);
    }
    if (found.size() == 1) return std::ranges::count(texts, "Settings") > 0;
    return found.size() > 1;
}

}  // namespace tandrel
