#include "platform/linux/bluez_settings.h"

#include <gtest/gtest.h>

namespace tandrel::bluez {
namespace {

TEST(BluezSettings, TellHowManyChannelsALinkMayHave) {
    const std::pair<const char*, int> rows[] = {
        {"", 3},
        {"[GATT]\nChannels = 1\n", 1},
        {"[General]\nName = x\n\n[GATT]\r\n Channels=2 \r\n[Policy]\n", 2},
        {"[GATT]\n# Channels = 1\n#Channels = 1", 3},
        {"[General]\nChannels = 1\n[GATT]\n", 3},
        {"[GATT]\nChannels = 1\n[Other]\nChannels = 4", 1},
        {"[GATT]\nChannels = 1\nChannels = 5", 5},
        {"[GATT]\nChannels = 0", 3},
        {"[GATT]\nChannels = 6", 3},
        {"[GATT]\nChannels = 99999999999999", 3},
        {"[GATT]\nChannels =", 3},
        {"[GATT\nChannels = 1", 3},
    };
    for (const auto& [text, channels] : rows) EXPECT_EQ(channelsOf(text), channels) << text;
    EXPECT_EQ(readChannels("/nowhere/main.conf"), 3);
}

}  // namespace
}  // namespace tandrel::bluez
