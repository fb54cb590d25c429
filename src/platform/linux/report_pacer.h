#pragma once

#include <algorithm>
#include <optional>

#include "base/clock.h"

namespace tandrel {

// How fast reports are handed to a Bluetooth daemon that takes any number and queues them without
// bound: what it has taken can't be taken back, and a radio that lags delivers it late. So there is
// a bound on the rate, and one on what the daemon has not yet been seen to take.
class ReportPacer {
 public:
    struct Limits {
        // 33 a second reach a phone one by one and in order, even where the daemon spreads them
        // over several channels of one link.
        Duration interval = std::chrono::milliseconds(30);
        // How much earlier than that a report may leave, so that a sender with the same pace is not
        // held up by its clock's jitter. The rate over time stays.
        Duration tolerance = std::chrono::milliseconds(10);
        // One at a time: where a link has several channels, what the daemon holds together leaves
        // on all of them at once.
        int mostInFlight = 1;
    };

    explicit ReportPacer(Limits limits) : limits_(limits) {}

    bool hasRoom(TimePoint now) const {
        return inFlight_ < limits_.mostInFlight && now + limits_.tolerance >= due_;
    }
    // A report is handed over; there is room.
    void handOver(TimePoint now) {
        due_ = std::max(due_, now) + limits_.interval;
        ++inFlight_;
    }
    // When a refused report can leave; none while that depends on `taken`.
    std::optional<TimePoint> roomAt() const {
        if (inFlight_ >= limits_.mostInFlight) return std::nullopt;
        return due_ - limits_.tolerance;
    }
    // The daemon has taken as many.
    void taken(int count) { inFlight_ = std::max(0, inFlight_ - count); }

 private:
    Limits limits_;
    TimePoint due_{};
    int inFlight_ = 0;
};

}  // namespace tandrel
