#pragma once

#include <map>
#include <string>
#include <vector>

#include "platform/virtual/input_event.h"
#include "platform/virtual/scenario.h"

namespace tandrel {

// One touch from down to up, by the pointer's button or by a finger.
struct VirtualTouch {
    // ignored: the phone slept, was locked, showed another page in the end, or AssistiveTouch was
    // off
    enum class Kind { tap, drag, ignored };
    Kind kind = Kind::tap;
    ScreenFraction from;
    ScreenFraction to;
    std::string page;    // shown when it went down
    std::string hit;     // the label of what lay under it then; empty for nothing
    double seconds = 0;  // from down to up

    bool operator==(const VirtualTouch&) const = default;
};

// What reached a virtual phone and what came of it.
struct VirtualPhoneRecord {
    // Of what arrived, the latest kMost each.
    static constexpr std::size_t kMost = 256;
    std::vector<VirtualTouch> touches;  // finished ones
    std::vector<KeyEvent> keys;
    std::vector<ConsumerEvent> consumers;
    std::string typed;  // the text of the keys, whether or not something took it

    int homes = 0;                      // times the owner's home was asked for
    int pointerMoves = 0;               // pointer reports that moved, or placed, the pointer
    std::map<std::string, int> counts;  // the scenario's counters

    // How things stand.
    std::string page;
    ScreenPower screen = ScreenPower::awake;
    bool searching = false;
    std::string query;  // what was typed into the search
    std::map<std::string, std::string, std::less<>> fields;
    std::map<std::string, bool, std::less<>> toggles;
    double scroll = 0;  // points
    bool landscape = false;
};

}  // namespace tandrel
