#pragma once

#include <functional>

#include "hid/hid_fixture.h"
#include "hid/input.h"
#include "support/manual_clock.h"

namespace tandrel {

// Time that a paced action turns by its own pauses. Before each pause what was sent so far reaches
// the fake Bluetooth system, so that a report's stamp is the moment at which it was sent.
class PacedClock final : public ManualClock {
 public:
    PacedClock() : ManualClock(Sleep::passes) {}
    std::function<void()> beforeSleep = [] {};

    bool sleepUntil(TimePoint deadline, std::stop_token stop) override {
        beforeSleep();
        return ManualClock::sleepUntil(deadline, std::move(stop));
    }
};

// The phone "A" listens. A transcript line is "<milliseconds> A <report>: <bytes>".
class InputFixture : private ClockFirst<PacedClock>, public HidFixture {
 protected:
    InputFixture() : HidFixture(clock), input(hid, FakeBluetooth::phone("A"), clock) {}

    void SetUp() override {
        begin();
        connect("A");
        clock.beforeSleep = [this] { hid.state(); };
        bluetooth.stamp = [this] { return std::to_string(elapsedMilliseconds()) + " "; };
    }

    long elapsedMilliseconds() const {
        return std::chrono::round<std::chrono::milliseconds>(clock.now() - start_).count();
    }

    // What the action made of the reports, from its beginning to the time at which it returned.
    std::vector<std::string> timed(const std::function<Result<void>()>& action) {
        bluetooth.clearTranscript();
        start_ = clock.now();
        const Result<void> result = action();
        std::vector<std::string> lines = sent();
        lines.push_back(result ? std::to_string(elapsedMilliseconds()) : result.error().message);
        return lines;
    }

    using ClockFirst<PacedClock>::clock;
    Input input;

 private:
    TimePoint start_ = clock.now();
};

}  // namespace tandrel
