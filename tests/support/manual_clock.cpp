#include "support/manual_clock.h"

namespace tandrel {

TimePoint ManualClock::now() const {
    std::lock_guard lock(mutex_);
    return now_;
}

WallTime ManualClock::wallNow() const {
    std::lock_guard lock(mutex_);
    return wallNow_;
}

bool ManualClock::sleepUntil(TimePoint deadline, std::stop_token stop) {
    if (sleep_ == Sleep::passes) {
        if (const TimePoint current = now(); deadline > current) advance(deadline - current);
        return !stop.stop_requested();
    }
    std::unique_lock lock(mutex_);
    ++sleepers_;
    changed_.notify_all();
    changed_.wait(lock, stop, [&] { return now_ >= deadline; });
    --sleepers_;
    return !stop.stop_requested();
}

void ManualClock::waitUntil(std::unique_lock<std::mutex>& lock, Wakeup& wakeup,
                            TimePoint deadline) {
    if (now() < deadline) wakeup.condition.wait(lock);
}

void ManualClock::attach(const std::shared_ptr<Wakeup>& wakeup) {
    std::lock_guard lock(mutex_);
    wakeups_.push_back(wakeup);
}

void ManualClock::advance(Duration by) {
    {
        std::lock_guard lock(mutex_);
        now_ += by;
        wallNow_ += std::chrono::duration_cast<WallTime::duration>(by);
    }
    changed_.notify_all();
    wakeAttached();
}

// A waiter holds its own mutex from reading the time until it waits, so taking that mutex here,
// never under ours, makes sure that it either saw the new time or hears the notification.
void ManualClock::wakeAttached() {
    std::vector<std::shared_ptr<Wakeup>> alive;
    {
        std::lock_guard lock(mutex_);
        for (const auto& weak : wakeups_) {
            if (auto wakeup = weak.lock()) alive.push_back(std::move(wakeup));
        }
    }
    for (const auto& wakeup : alive) {
        {
            std::lock_guard taken(wakeup->mutex);
        }
        wakeup->condition.notify_all();
    }
}

void ManualClock::awaitSleepers(int count) {
    std::unique_lock lock(mutex_);
    changed_.wait(lock, [&] { return sleepers_ >= count; });
}

}  // namespace tandrel
