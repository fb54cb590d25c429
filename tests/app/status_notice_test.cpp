#include "app/status_notice.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

using Inputs = AppModelInputs;
using Kind = EngineMode::Kind;
using Change = void (*)(Inputs&);

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

// From the last rule to the first: each row's fault comes on top of those before it, so that every
// rule is seen to win over all that follow it.
const std::pair<Change, std::optional<Notice>> kNoticeRows[] = {
    {[](Inputs&) {}, std::nullopt},
    {[](Inputs& in) {
         in.phoneConnected = false;
         in.linkChoice = LinkChoice::airplay;
         in.screenSource = ScreenSource::airplay;
     },
     Notice{"The iPhone isn't connected over Bluetooth",
            "Unlock it. If it doesn't reconnect, open Settings › Bluetooth on the iPhone and tap "
            "Tandrel (it may be listed as “Ada's Mac”).",
            Fix::reconnect, "Reconnect"}},
    {[](Inputs& in) {
         in.linkChoice = LinkChoice::usb;
         in.screenSource = ScreenSource::usb;
     },
     Notice{"Matching the iPhone to its screen", "Keep it unlocked with AssistiveTouch on.",
            Fix::matchAgain, "Match Again"}},
    {[](Inputs& in) { in.screenState = PhoneScreen::locked; },
     Notice{"Your iPhone is locked",
            "Unlock it so your AI can use it. Your AI can't unlock it for you."}},
    {[](Inputs& in) { in.screenState = PhoneScreen::off; },
     Notice{"The iPhone's screen is off",
            "Wake it and unlock it. Auto-Lock › Never keeps it awake while your AI works."}},
    {[](Inputs& in) {
         in.linkChoice = LinkChoice::airplay;
         in.screenSource = ScreenSource::none;
     },
     Notice{"Screen Mirroring isn't on",
            "On the iPhone: Control Center › Screen Mirroring › Ada's Mac", Fix::showScreen,
            "Show me"}},
    {[](Inputs& in) {
         in.linkChoice = LinkChoice::usb;
         in.usbPhone = in.usbPlugged = false;
     },
     Notice{"The iPhone's cable is unplugged",
            "Plug the iPhone into this Mac to let your AI see it.", Fix::showScreen, "Show me"}},
    {[](Inputs& in) { in.usbPlugged = true; },
     Notice{"The iPhone isn't sharing its screen",
            "It's plugged in. Unlock it, and tap Trust if it asks.", Fix::showScreen, "Show me"}},
    {[](Inputs& in) { in.bluetoothState = "Bluetooth off"; },
     Notice{"Bluetooth is off on this Mac",
            "Turn it on in Control Center. The iPhone reconnects by itself.",
            Fix::bluetoothSettings, "Open Bluetooth Settings"}},
    {[](Inputs& in) { in.bluetoothPerm = Permission::denied; },
     Notice{"Bluetooth is switched off for Tandrel",
            "Turn it back on in System Settings › Privacy & Security › Bluetooth.",
            Fix::bluetoothPrivacy, "Open Bluetooth Privacy"}},
    {[](Inputs& in) { in.setupDone = in.lastHealthyKnown = false; }, std::nullopt},
    {[](Inputs& in) { in.engineUp = false; },
     Notice{"Tandrel is starting", "Tandrel's phone connection is starting."}},
    {[](Inputs& in) { in.mode = {Kind::external, "PocketLink"}; },
     Notice{"PocketLink is running the phone connection",
            "This copy of Tandrel leaves the iPhone to it. Quit it to use this copy.",
            Fix::quitOthers, "Quit PocketLink"}},
    {[](Inputs& in) { in.mode = {Kind::failed, "can't listen on 127.0.0.1:7390: in use"}; },
     Notice{"Tandrel couldn't start its phone connection",
            "can't listen on 127.0.0.1:7390: in use. Quit Tandrel and open it again."}},
};

TEST(StatusNotice, TheFirstRuleThatAppliesWins) {
    Inputs inputs = ready();
    for (const auto& [change, expected] : kNoticeRows) {
        change(inputs);
        const auto shown = notice(inputs);
        EXPECT_EQ(shown, expected) << (expected ? expected->title : "none") << ", not "
                                   << (shown ? shown->title + ": " + shown->detail : "none");
    }
}

TEST(StatusNotice, WhatDoesNotHinderIsNotReported) {
    const Change harmless[] = {
        [](Inputs& in) { in.paused = true; },
        [](Inputs& in) { in.usbPhone = false; },                   // but a picture
        [](Inputs& in) { in.screenSource = ScreenSource::none; },  // no frame yet
        [](Inputs& in) { in.screenState = PhoneScreen::unknown; },
        [](Inputs& in) { in.setupDone = false; },  // but seen healthy
        [](Inputs& in) { in.bluetoothPerm = Permission::notDetermined; },
    };
    for (const Change& change : harmless) {
        Inputs inputs = ready();
        change(inputs);
        EXPECT_EQ(headline(inputs),
                  inputs.paused ? "Paused: your AI can look but not tap" : "iPhone ready");
    }
}

TEST(StatusNotice, HealthAndHeadlineOrderPauseNoticeAndSetupEachInTheirWay) {
    const std::tuple<bool, bool, bool, int, const char*> rows[] = {
        {false, false, false, 1, "iPhone ready"},
        {true, false, false, 3, "Paused: your AI can look but not tap"},
        {false, true, false, 2, "Your iPhone is locked"},
        {true, true, false, 3, "Your iPhone is locked"},
        {false, false, true, 0, "Setup isn't finished"},
        {true, false, true, 3, "Setup isn't finished"},
        {false, true, true, 0, "Setup isn't finished"},
    };
    for (const auto& [paused, locked, settingUp, level, says] : rows) {
        SCOPED_TRACE(testing::Message() << paused << locked << settingUp);
        Inputs inputs = ready();
        inputs.paused = paused;
        if (locked) inputs.screenState = PhoneScreen::locked;
        if (settingUp) inputs.setupDone = inputs.lastHealthyKnown = inputs.screenReady = false;
        EXPECT_EQ(static_cast<int>(health(inputs)), level);
        EXPECT_EQ(headline(inputs), says);
    }
}

TEST(StatusNotice, SetupIsOverOnceAllWasSeenToWork) {
    const Change healthy[] = {
        [](Inputs& in) { in.setupDone = true; },
        [](Inputs& in) { in.bluetoothReady = true; },  // the last of all that has to be
        [](Inputs& in) { in.lastHealthyKnown = true; },
    };
    for (const Change& change : healthy) {
        Inputs inputs = ready();
        inputs.setupDone = inputs.lastHealthyKnown = inputs.bluetoothReady = false;
        EXPECT_EQ(health(inputs), Health::setup);
        change(inputs);
        EXPECT_EQ(health(inputs), Health::ready);
    }
}

}  // namespace
}  // namespace tandrel
