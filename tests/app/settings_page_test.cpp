#include "app/settings_page.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(SettingsPage, IsToldFromSearchResultsAndFromTheHomeScreen) {
    struct Row {
        std::vector<std::string> texts;
        bool settings;
    };
    const Row rows[] = {
        {{"Settings", "General"}, true},
        {{"General"}, false},
        {{"Bluetooth", "Battery"}, true},
        {{"bluetooth", "BATTERY"}, true},
        {{"Bluetooth", "Bluetooth"}, false},
        {{"Settings"}, false},
        {{"settings", "General"}, false},
        {{"Settings", "General settings"}, false},
        {{"Wi-Fi", "Wi\u2011Fi"}, true},
        {{"Top Hit", "Settings", "General", "Battery"}, false},
        {{"Settings", "General", "siri suggestions"}, false},
        {{"Settings", "General", "Search Web for “settings”"}, false},
        {{"AssistiveTouch", "Touch"}, true},
        {{"Notes", "Shop"}, false},
        {{}, false},
    };
    for (const Row& row : rows) {
        EXPECT_EQ(looksLikeSettings(row.texts), row.settings) << testing::PrintToString(row.texts);
    }
}

}  // namespace
}  // namespace tandrel
