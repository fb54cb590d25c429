#include "app/app_snapshot.h"

namespace tandrel {
namespace {

// The chosen way first, then the other one.
ScreenSource sourceOf(const EngineReport& engine, LinkChoice link) {
    const bool airplay = engine.hasPicture(ScreenSource::airplay);
    if (link == LinkChoice::airplay && airplay) return ScreenSource::airplay;
    if (engine.hasPicture(ScreenSource::usb)) return ScreenSource::usb;
    return airplay ? ScreenSource::airplay : ScreenSource::none;
}

}  // namespace

std::string_view name(AIApp app) {
    switch (app) {
        case AIApp::claudeCode:
            return "Claude Code";
        case AIApp::claudeDesktop:
            return "Claude Desktop";
        case AIApp::codex:
            return "Codex";
    }
    return "";
}

std::string describe(const AIAppStatus& status) {
    if (status.link == Link::addedHere) return "uses this copy of Tandrel";
    if (status.link == Link::addedElsewhere) return "still points to an older copy of Tandrel";
    if (status.lost) return "has lost its entry for Tandrel";
    return status.installed ? "doesn't know Tandrel yet" : "not on this computer";
}

OwnerSettings OwnerSettings::read(const UserDefaults& defaults) {
    const auto chosen = [&](const char* key, bool unset) {
        return defaults.boolValue(key).value_or(unset);
    };
    return {.paused = chosen("paused", false),
            .setupDone = chosen("setupDone", false),
            .phoneWasSetUp = chosen("phoneWasSetUp", false),
            .link = defaults.textValue("link") == "airplay" ? LinkChoice::airplay : LinkChoice::usb,
            .askBeforePayments = chosen("askBeforePayments", true),
            .askWhenUnsure = chosen("askWhenUnsure", true)};
}

void AppSnapshot::take(const OwnerSettings& settings) {
    inputs.paused = settings.paused;
    inputs.setupDone = settings.setupDone;
    inputs.linkChoice = settings.link;
    phoneWasSetUp = phoneWasSetUp || settings.phoneWasSetUp;
    inputs.lastHealthyKnown = phoneWasSetUp;
    askBeforePayments = settings.askBeforePayments;
    askWhenUnsure = settings.askWhenUnsure;
}

void AppSnapshot::take(const EngineReport& engine, CablePhone cable) {
    phones = engine.phones;
    adapters = engine.adapters;
    hosts = engine.hosts;
    unmatchedHosts = engine.unmatchedHosts;
    absences = engine.absences;
    asking = engine.asking;
    airplay = engine.airplay;
    inputs.engineUp = engine.up;
    inputs.bluetoothState = engine.bluetooth;
    inputs.bluetoothReady = engine.bluetoothReady();
    inputs.phoneConnected = engine.phoneConnected();
    inputs.anyBluetoothHost = !engine.hosts.empty();
    inputs.usbPhone = engine.sees(ScreenSource::usb);
    inputs.usbPlugged = inputs.usbPhone || cable == CablePhone::pluggedIn;
    inputs.screenSource = sourceOf(engine, inputs.linkChoice);
    inputs.screenReady = inputs.screenSource != ScreenSource::none;
    // What an engine has read of a screen holds as long as there is one.
    inputs.screenState = inputs.screenReady ? engine.screenState : PhoneScreen::unknown;
    if (isHealthy()) phoneWasSetUp = inputs.lastHealthyKnown = true;
}

bool AppSnapshot::isHealthy() const {
    return inputs.engineUp && inputs.bluetoothReady && inputs.screenReady && inputs.phoneConnected;
}

}  // namespace tandrel
