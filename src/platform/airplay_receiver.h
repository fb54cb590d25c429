#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "base/result.h"

// The program that takes part in AirPlay screen mirroring on this computer.
namespace tandrel {

// How an AirPlay receiver of our own stands.
struct ReceiverStatus {
    enum class State {
        off,        // not asked for
        missing,    // its program or a part of it is not installed
        starting,   // started, not yet heard of
        waiting,    // on; no phone mirrors to it
        mirroring,  // frames come
        stalled,    // a phone mirrors to it, but frames stopped coming
        failed,     // it ended; it is started again after a while
    };
    State state = State::off;
    std::string name;   // as phones list it
    std::string error;  // one sentence; empty while all is well

    bool operator==(const ReceiverStatus&) const = default;
};

// The state's word, as the API gives it.
std::string_view name(ReceiverStatus::State state);

// Any thread.
class AirPlayReceiver {
 public:
    virtual ~AirPlayReceiver() = default;
    // Starts it unless it runs; returns at once. A receiver that ends is started again, later each
    // time.
    virtual void start() = 0;
    // Ends it and waits for that, which is bounded.
    virtual void stop() = 0;
    virtual ReceiverStatus status() = 0;
    // Whether phones find a receiver on this computer, ours or another's; none when that cannot be
    // told.
    virtual std::optional<bool> isOn() = 0;
};

}  // namespace tandrel
