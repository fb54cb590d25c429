#include "app/status_notice.h"

#include <algorithm>
#include <functional>
#include <iterator>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

using Inputs = AppModelInputs;
using Kind = EngineMode::Kind;
using Change = std::function<void(Inputs&)>;

// Everything in order over the cable.
Inputs ready() {
    return {.mode = {Kind::own, ""},
            .engineUp = true,
            .setupDone = true,
            .bluetoothReady = true,
            .screenReady = true,
            .phoneConnected = true,
            .lastHealthyKnown = true,
            .bluetoothPerm = Permission::granted,
            .bluetoothState = "1 connected, advertising as Tandrel",
            .usbPhone = true,
            .usbPlugged = true,
            .screenSource = ScreenSource::usb,
            .screenState = PhoneScreen::awake,
            .anyBluetoothHost = true,
            .advertisedName = "Tandrel",
            .macName = "Ada's Mac"};
}

struct NoticeRow {
    const char* name;
    Change change;
    std::optional<Notice> expected;
};

// From the last rule to the first, in both lists together: each row's fault comes on top of those
// before it, so that every rule is seen to win over all that follow it.
std::vector<NoticeRow> phoneRows() {
    return {
        {"in order", [](Inputs&) {}, std::nullopt},
        {"no phone over Bluetooth, seen by AirPlay",
         [](Inputs& in) {
             in.phoneConnected = false;
             in.linkChoice = LinkChoice::airplay;
             in.screenSource = ScreenSource::airplay;
         },
         Notice{
             "The iPhone isn't connected over Bluetooth",
             "Unlock it. If it doesn't reconnect, open Settings › Bluetooth on the iPhone and tap "
             "Tandrel (it may be listed as “Ada's Mac”).",
             Fix::reconnect, "Reconnect"}},
        {"a host that has no screen yet",
         [](Inputs& in) {
             in.linkChoice = LinkChoice::usb;
             in.screenSource = ScreenSource::usb;
         },
         Notice{"Matching the iPhone to its screen", "Keep it unlocked with AssistiveTouch on.",
                Fix::matchAgain, "Match Again"}},
        {"locked", [](Inputs& in) { in.screenState = PhoneScreen::locked; },
         Notice{"Your iPhone is locked",
                "Unlock it so your AI can use it. Your AI can't unlock it for you."}},
        {"asleep", [](Inputs& in) { in.screenState = PhoneScreen::off; },
         Notice{"The iPhone's screen is off",
                "Wake it and unlock it. Auto-Lock › Never keeps it awake while your AI works."}},
        {"AirPlay without a picture",
         [](Inputs& in) {
             in.linkChoice = LinkChoice::airplay;
             in.screenSource = ScreenSource::none;
         },
         Notice{"Screen Mirroring isn't on",
                "On the iPhone: Control Center › Screen Mirroring › Ada's Mac", Fix::showScreen,
                "Show me"}},
        {"unplugged",
         [](Inputs& in) {
             in.linkChoice = LinkChoice::usb;
             in.usbPhone = false;
             in.usbPlugged = false;
         },
         Notice{"The iPhone's cable is unplugged",
                "Plug the iPhone into this Mac to let your AI see it.", Fix::showScreen,
                "Show me"}},
        {"plugged in but not trusted", [](Inputs& in) { in.usbPlugged = true; },
         Notice{"The iPhone isn't sharing its screen",
                "It's plugged in. Unlock it, and tap Trust if it asks.", Fix::showScreen,
                "Show me"}},
    };
}

std::vector<NoticeRow> computerRows() {
    return {
        {"Bluetooth off", [](Inputs& in) { in.bluetoothState = "Bluetooth off"; },
         Notice{"Bluetooth is off on this Mac",
                "Turn it on in Control Center. The iPhone reconnects by itself.",
                Fix::bluetoothSettings, "Open Bluetooth Settings"}},
        {"Bluetooth not allowed", [](Inputs& in) { in.bluetoothPerm = Permission::denied; },
         Notice{"Bluetooth is switched off for Tandrel",
                "Turn it back on in System Settings › Privacy & Security › Bluetooth.",
                Fix::bluetoothPrivacy, "Open Bluetooth Privacy"}},
        {"in setup",
         [](Inputs& in) {
             in.setupDone = false;
             in.lastHealthyKnown = false;
         },
         std::nullopt},
        {"starting", [](Inputs& in) { in.engineUp = false; },
         Notice{"Tandrel is starting", "Tandrel's phone connection is starting."}},
        {"another program", [](Inputs& in) { in.mode = {Kind::external, "PocketLink"}; },
         Notice{"PocketLink is running the phone connection",
                "This copy of Tandrel leaves the iPhone to it. Quit it to use this copy.",
                Fix::quitOthers, "Quit PocketLink"}},
        {"the engine failed",
         [](Inputs& in) { in.mode = {Kind::failed, "can't listen on 127.0.0.1:7390: in use"}; },
         Notice{"Tandrel couldn't start its phone connection",
                "can't listen on 127.0.0.1:7390: in use. Quit Tandrel and open it again."}},
    };
}

TEST(StatusNotice, TheFirstRuleThatAppliesWins) {
    Inputs inputs = ready();
    std::vector<NoticeRow> rows = phoneRows();
    std::ranges::move(computerRows(), std::back_inserter(rows));
    for (const NoticeRow& row : rows) {
        row.change(inputs);
        const auto shown = notice(inputs);
        ASSERT_EQ(shown.has_value(), row.expected.has_value()) << row.name;
        if (!shown) continue;
        EXPECT_EQ(shown->title, row.expected->title) << row.name;
        EXPECT_EQ(shown->detail, row.expected->detail) << row.name;
        EXPECT_EQ(shown->fix, row.expected->fix) << row.name;
        EXPECT_EQ(shown->fixLabel, row.expected->fixLabel) << row.name;
    }
}

TEST(StatusNotice, WhatDoesNotHinderIsNotReported) {
    const std::pair<const char*, Change> harmless[] = {
        {"paused", [](Inputs& in) { in.paused = true; }},
        {"no camera phone, but a picture",
         [](Inputs& in) {
             in.usbPhone = false;
             in.screenSource = ScreenSource::airplay;
         }},
        {"a camera phone without a frame yet",
         [](Inputs& in) { in.screenSource = ScreenSource::none; }},
        {"a screen that could not be told",
         [](Inputs& in) { in.screenState = PhoneScreen::unknown; }},
        {"setup not finished but seen healthy", [](Inputs& in) { in.setupDone = false; }},
        {"not asked for Bluetooth yet",
         [](Inputs& in) { in.bluetoothPerm = Permission::notDetermined; }},
    };
    for (const auto& [name, change] : harmless) {
        Inputs inputs = ready();
        change(inputs);
        EXPECT_EQ(notice(inputs), std::nullopt) << name;
    }
}

TEST(StatusNotice, HealthAndHeadlineOrderPauseNoticeAndSetupEachInTheirWay) {
    struct Row {
        const char* name;
        bool paused;
        bool locked;
        bool settingUp;
        int health;
        const char* headline;
    };
    const Row table[] = {
        {"in order", false, false, false, 1, "iPhone ready"},
        {"paused", true, false, false, 3, "Paused: your AI can look but not tap"},
        {"locked", false, true, false, 2, "Your iPhone is locked"},
        {"paused and locked", true, true, false, 3, "Your iPhone is locked"},
        {"setting up", false, false, true, 0, "Setup isn't finished"},
        {"paused while setting up", true, false, true, 3, "Setup isn't finished"},
        {"locked while setting up", false, true, true, 0, "Setup isn't finished"},
    };
    for (const Row& row : table) {
        Inputs inputs = ready();
        inputs.paused = row.paused;
        if (row.locked) inputs.screenState = PhoneScreen::locked;
        if (row.settingUp) inputs.setupDone = inputs.lastHealthyKnown = inputs.screenReady = false;
        EXPECT_EQ(static_cast<int>(health(inputs)), row.health) << row.name;
        EXPECT_EQ(headline(inputs), row.headline) << row.name;
    }
}

TEST(StatusNotice, SetupIsOverOnceAllWasSeenToWork) {
    for (const auto& [name, change] : std::initializer_list<std::pair<const char*, Change>>{
             {"done", [](Inputs& in) { in.setupDone = true; }},
             {"all ready",
              [](Inputs& in) { in.bluetoothReady = in.screenReady = in.phoneConnected = true; }},
             {"healthy before", [](Inputs& in) { in.lastHealthyKnown = true; }}}) {
        Inputs inputs = ready();
        inputs.setupDone = inputs.lastHealthyKnown = inputs.bluetoothReady = false;
        EXPECT_EQ(health(inputs), Health::setup) << name;
        change(inputs);
        EXPECT_EQ(health(inputs), Health::ready) << name;
    }
}

}  // namespace
}  // namespace tandrel
