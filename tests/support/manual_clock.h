#pragma once

#include <condition_variable>
#include <memory>
#include <mutex>
#include <vector>

#include "base/clock.h"

namespace tandrel {

// A clock that stands still until a test turns it. With `Sleep::passes` a sleep turns the clock
// itself and returns at once, which suits tests of paced sequences; with `Sleep::waits` it blocks
// until `advance` reaches its deadline.
class ManualClock : public Clock {
 public:
    enum class Sleep { passes, waits };
    explicit ManualClock(Sleep sleep = Sleep::waits) : sleep_(sleep) {}

    TimePoint now() const override;
    WallTime wallNow() const override;
    bool sleepUntil(TimePoint deadline, std::stop_token stop) override;
    void waitUntil(std::unique_lock<std::mutex>& lock, Wakeup& wakeup, TimePoint deadline) override;
    void attach(const std::shared_ptr<Wakeup>& wakeup) override;

    // Moves time on and wakes whatever waits for it.
    void advance(Duration by);
    // Blocks until `count` threads sleep in sleepUntil.
    void awaitSleepers(int count);

 private:
    void wakeAttached();

    const Sleep sleep_;
    mutable std::mutex mutex_;
    std::condition_variable_any changed_;
    TimePoint now_ = TimePoint(std::chrono::hours(1));
    WallTime wallNow_ = WallTime(std::chrono::hours(24 * 365 * 56));
    int sleepers_ = 0;
    std::vector<std::weak_ptr<Wakeup>> wakeups_;
};

}  // namespace tandrel
