#pragma once

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <stop_token>

namespace tandrel {

using Duration = std::chrono::nanoseconds;
using TimePoint = std::chrono::steady_clock::time_point;
using WallTime = std::chrono::system_clock::time_point;

// A length of time as the API and the input actions give it. NaN and negative values become 0,
// anything beyond a day becomes a day.
Duration seconds(double value);
double toSeconds(Duration duration);

// A mutex and a condition on which a thread waits until told or until a time of some clock.
struct Wakeup {
    std::mutex mutex;
    std::condition_variable condition;
};

// Where every wait and time stamp comes from, so that tests can turn time by hand. Any thread.
class Clock {
 public:
    virtual ~Clock() = default;
    virtual TimePoint now() const = 0;
    virtual WallTime wallNow() const = 0;

    // Blocks until `deadline` or until `stop` is requested; says whether the deadline was reached.
    virtual bool sleepUntil(TimePoint deadline, std::stop_token stop = {}) = 0;
    bool sleepFor(Duration duration, std::stop_token stop = {}) {
        return sleepUntil(now() + duration, std::move(stop));
    }

    // One wait on `wakeup.condition` that ends at a notification or at `deadline`, whichever comes
    // first; it may also end early. `lock` holds `wakeup.mutex`. A clock turned by hand notifies
    // only wakeups it was told of with `attach`.
    virtual void waitUntil(std::unique_lock<std::mutex>& lock, Wakeup& wakeup,
                           TimePoint deadline) = 0;
    virtual void attach(const std::shared_ptr<Wakeup>& wakeup) = 0;
};

// The system's monotonic and wall clocks.
Clock& systemClock();

}  // namespace tandrel
