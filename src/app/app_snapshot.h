#pragma once

#include <optional>
#include <string>
#include <vector>

#include "aiconnect/link.h"
#include "app/engine_report.h"
#include "app/status_helper_check.h"
#include "app/status_notice.h"
#include "platform/permissions.h"
#include "platform/user_defaults.h"

namespace tandrel {

enum class AIApp { claudeCode, claudeDesktop, codex };

// The app's name for the owner.
std::string_view name(AIApp app);

// One AI app on this computer and how its settings stand to this copy of Tandrel.
struct AIAppStatus {
    AIApp app = AIApp::claudeCode;
    bool installed = false;
    bool running = false;  // known of Claude Desktop alone
    Link link = Link::notAdded;
    bool lost = false;         // our entry was there once and has gone
    std::string toPaste = {};  // the command or the lines that add Tandrel by hand

    bool operator==(const AIAppStatus&) const = default;
};

// How it stands, in a few words such as "uses this copy of Tandrel".
std::string describe(const AIAppStatus& status);

// What the owner has chosen, and what is remembered.
struct OwnerSettings {
    bool paused = false;
    bool setupDone = false;
    bool phoneWasSetUp = false;
    LinkChoice link = LinkChoice::usb;
    bool askBeforePayments = true;
    bool askWhenUnsure = true;

    static OwnerSettings read(const UserDefaults& defaults);
};

// Whether a phone hangs on the cable, whatever it shares.
enum class CablePhone { notSeen, pluggedIn };

// Everything that the windows show, as it was at one moment. A value: keep it as long as you like.
struct AppSnapshot {
    AppModelInputs inputs;  // for `notice`, `health` and `headline`

    std::vector<PhoneSeen> phones;
    std::vector<AdapterReport> adapters;      // of Bluetooth
    std::vector<std::string> hosts;           // Bluetooth connections
    std::vector<std::string> unmatchedHosts;  // those of them whose screen is not known
    std::vector<std::string> absences;        // sentences on what this system lacks
    AirPlayReport airplay;
    bool asking = false;  // a question about a payment is open

    Permission cameraPerm = Permission::notDetermined;
    Permission screenRecordingPerm = Permission::notDetermined;
    bool askBeforePayments = true;
    bool askWhenUnsure = true;
    bool phoneWasSetUp = false;  // everything worked at least once, in this run or an earlier one

    HelperCheck::State helper;
    bool liesInPassing = false;       // this copy may not stay where it is
    std::vector<AIAppStatus> aiApps;  // one row an app, always in the order of AIApp

    std::optional<bool> testPassed;  // by the phone test; none before the first one
    bool assistiveTouchOn = false;   // the phone test has seen the pointer

    void take(const OwnerSettings& settings);
    void take(const EngineReport& engine, CablePhone cable);
    // The engine, Bluetooth, the screen and the phone all work.
    bool isHealthy() const;

    bool operator==(const AppSnapshot&) const = default;
};

}  // namespace tandrel
