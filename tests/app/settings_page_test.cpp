#include "app/settings_page.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(SettingsPage, IsToldFromSearchResultsAndFromTheHomeScreen) {
    using Texts = std::vector<std::string>;
    for (const Texts& texts : {Texts{"Settings", "General"}, Texts{"bluetooth", "BATTERY"},
                               Texts{"Wi-Fi", "Wi\u2011Fi"}, Texts{"AssistiveTouch", "Touch"}}) {
        EXPECT_TRUE(looksLikeSettings(texts)) << testing::PrintToString(texts);
    }
    for (const Texts& texts :
         {Texts{}, Texts{"General"}, Texts{"Bluetooth", "Bluetooth"}, Texts{"Settings"},
          Texts{"settings", "General"}, Texts{"Settings", "General settings"},
          Texts{"Top Hit", "Settings", "General", "Battery"},
          Texts{"Settings", "General", "siri suggestions"},
          Texts{"Settings", "General", "Search Web for “settings”"}, Texts{"Notes", "Shop"}}) {
        EXPECT_FALSE(looksLikeSettings(texts)) << testing::PrintToString(texts);
    }
}

}  // namespace
}  // namespace tandrel
