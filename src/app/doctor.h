#pragma once

#include <optional>
#include <string>
#include <vector>

#include "app/app_snapshot.h"
#include "base/json.h"

namespace tandrel {

// One thing that an assistant needs to use the phone, or that is worth knowing.
struct Condition {
    enum class State { good, bad, note };
    State state = State::good;
    std::string name;
    std::string words;  // how it stands
    std::string step;   // what to do about it; empty when there is nothing to do

    bool operator==(const Condition&) const = default;
};

// What was found out about a running engine and this computer.
struct Findings {
    AppSnapshot snapshot;
    std::string engineUrl;
    std::string engineApp;  // who answers there; empty when nobody does
    std::string engineVersion;
    int bluetoothChannels = 1;             // that the Bluetooth service may open on one link
    std::optional<std::string> readError;  // why the screen's text cannot be read
};

struct Diagnosis {
    std::vector<Condition> conditions;
    std::string next;    // the one next step; empty when there is none
    bool ready = false;  // an assistant could use the phone now

    Json json() const;
    // For a terminal, a line each.
    std::string text() const;
};

Diagnosis diagnose(const Findings& findings);

}  // namespace tandrel
