#pragma once

#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <thread>

#include <sdbus-c++/sdbus-c++.h>

#include "base/clock.h"
#include "base/file_descriptor.h"

namespace tandrel {

// A thread with one connection to the system's bus, on which everything of that connection happens:
// what arrives, and tasks posted from elsewhere, in the order in which they were posted. The
// connection is never shared, so nothing on it needs a lock and messages leave in order.
class BusLoop {
 public:
    using Task = std::move_only_function<void()>;

    // Both are called on the thread. `lost` comes before the connection of the last `opened` ends,
    // at the end of the loop too; without a connection the bus is tried again every `retry`.
    struct Events {
        std::function<void(BusLoop&, sdbus::IConnection&)> opened;
        std::function<void()> lost;
        std::function<void(const std::string& reason)> failed;  // to open; once for each reason
    };

    BusLoop(const std::string& threadName, Events events, Duration retry = std::chrono::seconds(5));
    // Runs what was posted before, drops what was to run later, sends what is unsent.
    ~BusLoop();
    BusLoop(const BusLoop&) = delete;
    BusLoop& operator=(const BusLoop&) = delete;

    // Any thread. Tasks run without a connection too.
    void post(Task task) { postAfter(Duration{}, std::move(task)); }
    void postAfter(Duration delay, Task task);

 private:
    struct Later {
        TimePoint due;
        std::uint64_t number;
        mutable Task task;
        bool operator<(const Later& other) const {
            return std::pair(due, number) < std::pair(other.due, other.number);
        }
    };

    // The thread's.
    void run();
    void tryToOpen();
    void close();
    void wait(std::optional<TimePoint> until);
    void processBus();
    std::optional<TimePoint> runTasks();

    const Events events_;
    const Duration retry_;
    const FileDescriptor wakeup_;  // an eventfd: something was posted, or the loop is to end
    std::mutex mutex_;
    bool ending_ = false;           // under mutex_
    std::uint64_t lastNumber_ = 0;  // under mutex_
    std::set<Later> tasks_;         // under mutex_; bounded by what its owners post and answer

    std::unique_ptr<sdbus::IConnection> bus_;
    TimePoint nextTry_{};
    std::string lastFailure_;

    std::thread thread_;
};

}  // namespace tandrel
