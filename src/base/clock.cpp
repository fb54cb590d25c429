#include "base/clock.h"

#include <algorithm>
#include <cmath>

namespace tandrel {
namespace {

class SystemClock final : public Clock {
 public:
    TimePoint now() const override { return std::chrono::steady_clock::now(); }
    WallTime wallNow() const override { return std::chrono::system_clock::now(); }

    bool sleepUntil(TimePoint deadline, std::stop_token stop) override {
        std::mutex mutex;
        std::condition_variable_any condition;
        std::unique_lock lock(mutex);
        condition.wait_until(lock, stop, deadline, [] { return false; });
        return !stop.stop_requested();
    }

    void waitUntil(std::unique_lock<std::mutex>& lock, Wakeup& wakeup,
                   TimePoint deadline) override {
        if (deadline == TimePoint::max()) {
            wakeup.condition.wait(lock);
        } else {
            wakeup.condition.wait_until(lock, deadline);
        }
    }

    void attach(const std::shared_ptr<Wakeup>&) override {}
};

constexpr double kLongestSeconds = 86400;

}  // namespace

Duration seconds(double value) {
    if (!(value > 0)) return Duration::zero();
    return std::chrono::duration_cast<Duration>(
        std::chrono::duration<double>(std::min(value, kLongestSeconds)));
}

double toSeconds(Duration duration) { return std::chrono::duration<double>(duration).count(); }

Clock& systemClock() {
    // Never destroyed: a thread may still look at it while the program exits.
    static Clock& clock = *new SystemClock;
    return clock;
}

}  // namespace tandrel
