#pragma once

#include <optional>
#include <string>

#include "engine/engine.h"
#include "platform/permissions.h"
#include "screen/phone_screen.h"

// Why the assistant cannot use the phone at this moment, and the one thing to do about it. Pure
// functions of what the application model knows.
namespace tandrel {

// The way the owner chose to see the phone's screen.
enum class LinkChoice { usb, airplay };
// Where a picture of the phone comes from at this moment.
enum class ScreenSource { none, usb, airplay };

// What the application model has polled. `screenState` is `off` for a phone that sleeps.
struct AppModelInputs {
    EngineMode mode;
    bool engineUp = false;
    bool paused = false;
    bool setupDone = false;
    bool bluetoothReady = false;
    bool screenReady = false;
    bool phoneConnected = false;    // over Bluetooth
    bool lastHealthyKnown = false;  // the phone was seen with everything in order at least once
    Permission bluetoothPerm = Permission::notDetermined;
    std::string bluetoothState;  // the peripheral's words
    LinkChoice linkChoice = LinkChoice::usb;
    bool usbPhone = false;    // a phone is there as a camera
    bool usbPlugged = false;  // a phone hangs on the cable, whatever it shares
    ScreenSource screenSource = ScreenSource::none;
    PhoneScreen screenState = PhoneScreen::unknown;
    bool anyBluetoothHost = false;
    std::string advertisedName;  // this computer's Bluetooth name
    std::string macName;

    bool operator==(const AppModelInputs&) const = default;
};

// What the application can do for the owner behind a notice's button.
enum class Fix {
    allowBluetooth,
    bluetoothPrivacy,
    bluetoothSettings,
    allowCamera,
    cameraPrivacy,
    airplaySettings,
    allowScreenRecording,
    checkPointer,
    moveToApplications,
    approveHelper,
    reconnect,
    resume,
    test,
    matchAgain,  // find out once more which screen the Bluetooth host belongs to
    quitOthers,  // end the other program that serves the engine's port
    showScreen,  // open the setup at the step that shows how the screen is seen
};

struct Notice {
    std::string title;   // what is wrong
    std::string detail;  // what to do
    std::optional<Fix> fix = std::nullopt;
    std::optional<std::string> fixLabel = std::nullopt;

    bool operator==(const Notice&) const = default;
};

// The first thing in the way; nothing when nothing is, or while the setup window guides.
std::optional<Notice> notice(const AppModelInputs& inputs);

// The icon's state; the numbers are those that the icon and the menu show.
enum class Health { setup = 0, ready = 1, attention = 2, paused = 3 };
Health health(const AppModelInputs& inputs);

// The menu's first line.
std::string headline(const AppModelInputs& inputs);

}  // namespace tandrel
