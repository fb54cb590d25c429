#include "platform/linux/clock_jump.h"

#include <ctime>
#include <utility>

#include "base/log.h"

namespace tandrel {
namespace {

Duration reading(clockid_t clock) {
    timespec time{};
    ::clock_gettime(clock, &time);
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

bool hasJumped(const ClockReadings& before, const ClockReadings& now) {
    const Duration passed = now.monotonic - before.monotonic;
    return now.sinceBoot - before.sinceBoot - passed >= ClockJumpPower::kShortestSleep ||
           now.wall - before.wall - passed >= ClockJumpPower::kShortestPause ||
           passed >= ClockJumpPower::kBetweenLooks + ClockJumpPower::kShortestPause;
}

}  // namespace

ClockReadings ClockReadings::now() {
    return {reading(CLOCK_MONOTONIC), reading(CLOCK_BOOTTIME), reading(CLOCK_REALTIME)};
}

ClockJumpPower::ClockJumpPower(Power& told, MainLoop& loop, Read read)
    : told_(told),
      read_(std::move(read)),
      last_(read_()),
      timer_(loop.every(kBetweenLooks, [this] { look(); })) {}

ClockJumpPower::~ClockJumpPower() {
    told_.setOnSleep({});
    told_.setOnWake({});
}

void ClockJumpPower::setOnSleep(std::function<void()> willSleep) {
    told_.setOnSleep(std::move(willSleep));
}

// A wake that was told is not found out a second time.
void ClockJumpPower::setOnWake(std::function<void()> didWake) {
    didWake_ = std::move(didWake);
    if (!didWake_) return told_.setOnWake({});
    told_.setOnWake([this] {
        last_ = read_();
        if (didWake_) didWake_();
    });
}

void ClockJumpPower::look() {
    const ClockReadings now = read_();
    if (!hasJumped(std::exchange(last_, now), now)) return;
    log("power: the clock jumped: taken for a wake");
    if (didWake_) didWake_();
}

}  // namespace tandrel
