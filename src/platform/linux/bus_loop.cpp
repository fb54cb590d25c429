#include "platform/linux/bus_loop.h"

#include <array>

#include <poll.h>
#include <pthread.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "base/log.h"
#include "platform/linux/system_bus.h"

namespace tandrel {
namespace {

// So that a flood of messages keeps no task waiting.
constexpr int kMostMessagesInARow = 64;

}  // namespace

BusLoop::BusLoop(const std::string& threadName, Events events, Duration retry)
    : events_(std::move(events)), retry_(retry), wakeup_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
    thread_ = std::thread([this] { run(); });
    pthread_setname_np(thread_.native_handle(), threadName.c_str());
}

BusLoop::~BusLoop() {
    {
        std::lock_guard lock(mutex_);
        ending_ = true;
    }
    ::eventfd_write(wakeup_.get(), 1);
    thread_.join();
}

void BusLoop::postAfter(Duration delay, Task task) {
    {
        std::lock_guard lock(mutex_);
        if (ending_) return;
        // What is to run at once runs in order of posting, whatever the clock's resolution.
        const TimePoint due = delay > Duration{} ? systemClock().now() + delay : TimePoint{};
        tasks_.insert({due, ++lastNumber_, std::move(task)});
    }
    ::eventfd_write(wakeup_.get(), 1);
}

void BusLoop::run() {
    for (;;) {
        if (!bus_ && systemClock().now() >= nextTry_) tryToOpen();
        const auto nextTask = runTasks();
        {
            std::lock_guard lock(mutex_);
            if (ending_ && (tasks_.empty() || tasks_.begin()->due > TimePoint{})) break;
        }
        if (bus_) processBus();
        wait(nextTask);
    }
    close();
}

void BusLoop::tryToOpen() {
    auto bus = openSystemBus();
    if (!bus) {
        nextTry_ = systemClock().now() + retry_;
        if (std::exchange(lastFailure_, bus.error().message) != lastFailure_) {
            events_.failed(lastFailure_);
        }
        return;
    }
    lastFailure_.clear();
    bus_ = *std::move(bus);
    try {
        events_.opened(*this, *bus_);
    } catch (const sdbus::Error& error) {
        log("bus: " + error.getMessage());
        nextTry_ = systemClock().now() + retry_;
        close();
    }
}

void BusLoop::close() {
    if (!bus_) return;
    events_.lost();
    bus_.reset();
}

// The tasks that are due; when the first of the others is.
std::optional<TimePoint> BusLoop::runTasks() {
    for (;;) {
        Task task;
        {
            std::lock_guard lock(mutex_);
            if (tasks_.empty()) return std::nullopt;
            const auto first = tasks_.begin();
            if (first->due > systemClock().now()) return first->due;
            if (ending_ && first->due > TimePoint{}) return std::nullopt;
            task = std::move(first->task);
            tasks_.erase(first);
        }
        try {
            task();
        } catch (const sdbus::Error& error) {
            log("bus: " + error.getMessage());
        }
    }
}

void BusLoop::processBus() {
    try {
        for (int i = 0; i < kMostMessagesInARow && bus_->processPendingRequest(); ++i) {
        }
    } catch (const sdbus::Error& error) {
        log("the system's message bus is gone: " + error.getMessage());
        nextTry_ = systemClock().now() + retry_;
        close();
    }
}

void BusLoop::wait(std::optional<TimePoint> until) {
    std::array<pollfd, 2> descriptors = {{{wakeup_.get(), POLLIN, 0}, {-1, 0, 0}}};
    if (bus_) {
        const auto poll = bus_->getEventLoopPollData();
        descriptors[1] = {poll.fd, poll.events, 0};
        // The bus library counts in microseconds of the same monotonic clock.
        if (poll.timeout_usec != UINT64_MAX) {
            const TimePoint due{std::chrono::microseconds(poll.timeout_usec)};
            until = until ? std::min(*until, due) : due;
        }
    } else {
        until = until ? std::min(*until, nextTry_) : nextTry_;
    }
    int milliseconds = -1;
    if (until) {
        const auto left =
            std::chrono::ceil<std::chrono::milliseconds>(*until - systemClock().now()).count();
        milliseconds = static_cast<int>(std::clamp<long long>(left, 0, 60'000));
    }
    ::poll(descriptors.data(), descriptors.size(), milliseconds);
    eventfd_t count = 0;
    ::eventfd_read(wakeup_.get(), &count);
}

}  // namespace tandrel
