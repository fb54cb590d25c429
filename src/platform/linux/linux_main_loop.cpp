#include "platform/linux/linux_main_loop.h"

#include <algorithm>
#include <cstdint>
#include <deque>
#include <map>
#include <mutex>
#include <optional>
#include <utility>

namespace tandrel {
namespace {

TimePoint later(TimePoint now, Duration delay) {
    if (delay <= Duration::zero()) return now;
    return delay > TimePoint::max() - now ? TimePoint::max() : now + delay;
}

}  // namespace

struct LinuxMainLoop::State {
    // Timers of the same time run in the order they were made.
    using Key = std::pair<TimePoint, std::uint64_t>;

    struct Entry {
        std::shared_ptr<Task> task;
        Duration interval{};  // zero: once
    };

    explicit State(Clock& timeSource) : clock(timeSource) {}

    Clock& clock;
    std::shared_ptr<Wakeup> wakeup = std::make_shared<Wakeup>();
    // All below under wakeup->mutex.
    std::deque<Task> ready;
    std::map<Key, Entry> timers;
    std::map<std::uint64_t, TimePoint> deadlines;  // where in `timers` each timer stands
    std::uint64_t lastTimer = 0;
    std::optional<int> status;

    std::uint64_t add(TimePoint deadline, Entry entry) {
        std::lock_guard lock(wakeup->mutex);
        const std::uint64_t id = ++lastTimer;
        deadlines.emplace(id, deadline);
        timers.emplace(Key{deadline, id}, std::move(entry));
        return id;
    }

    void cancel(std::uint64_t id) {
        Entry dropped;  // what its task holds goes after the lock
        std::lock_guard lock(wakeup->mutex);
        const auto found = deadlines.find(id);
        if (found == deadlines.end()) return;
        auto node = timers.extract(Key{found->second, id});
        dropped = std::move(node.mapped());
        deadlines.erase(found);
    }

    // The task of the first timer that is due, if one is; a repeating timer is set for its next
    // turn.
    std::shared_ptr<Task> takeDueTimer() {
        const TimePoint now = clock.now();
        if (timers.empty() || timers.begin()->first.first > now) return nullptr;
        auto node = timers.extract(timers.begin());
        const auto [deadline, id] = node.key();
        const std::shared_ptr<Task> task = node.mapped().task;
        const Duration interval = node.mapped().interval;
        if (interval == Duration::zero()) {
            deadlines.erase(id);
            return task;
        }
        const TimePoint next = later(deadline, interval);
        node.key().first = next > now ? next : later(now, interval);
        deadlines[id] = node.key().first;
        timers.insert(std::move(node));
        return task;
    }
};

class LinuxMainLoop::LoopTimer final : public Timer {
 public:
    LoopTimer(std::weak_ptr<State> state, std::uint64_t id) : state_(std::move(state)), id_(id) {}
    ~LoopTimer() override {
        if (const auto state = state_.lock()) state->cancel(id_);
    }
    LoopTimer(const LoopTimer&) = delete;
    LoopTimer& operator=(const LoopTimer&) = delete;

 private:
    const std::weak_ptr<State> state_;
    const std::uint64_t id_;
};

LinuxMainLoop::LinuxMainLoop(Clock& clock) : state_(std::make_shared<State>(clock)) {
    clock.attach(state_->wakeup);
}

LinuxMainLoop::~LinuxMainLoop() {
    std::deque<Task> ready;
    std::map<State::Key, State::Entry> timers;
    std::lock_guard lock(state_->wakeup->mutex);
    ready.swap(state_->ready);
    timers.swap(state_->timers);
    state_->deadlines.clear();
}

void LinuxMainLoop::post(Task task) {
    {
        std::lock_guard lock(state_->wakeup->mutex);
        state_->ready.push_back(std::move(task));
    }
    state_->wakeup->condition.notify_all();
}

std::unique_ptr<Timer> LinuxMainLoop::after(Duration delay, Task task) {
    const auto id = state_->add(later(state_->clock.now(), delay),
                                {std::make_shared<Task>(std::move(task)), Duration::zero()});
    return std::make_unique<LoopTimer>(state_, id);
}

std::unique_ptr<Timer> LinuxMainLoop::every(Duration interval, Task task) {
    interval = std::max(interval, kShortestInterval);
    const auto id = state_->add(later(state_->clock.now(), interval),
                                {std::make_shared<Task>(std::move(task)), interval});
    return std::make_unique<LoopTimer>(state_, id);
}

int LinuxMainLoop::run() {
    std::unique_lock lock(state_->wakeup->mutex);
    while (!state_->status) {
        bool idle = true;
        if (auto due = state_->takeDueTimer()) {
            idle = false;
            lock.unlock();
            (*due)();
            due.reset();  // what a timer's task holds goes before the lock is taken again
            lock.lock();
        }
        if (!state_->status && !state_->ready.empty()) {
            idle = false;
            Task task = std::move(state_->ready.front());
            state_->ready.pop_front();
            lock.unlock();
            task();
            task = nullptr;
            lock.lock();
        }
        if (!idle || state_->status) continue;
        state_->clock.waitUntil(
            lock, *state_->wakeup,
            state_->timers.empty() ? TimePoint::max() : state_->timers.begin()->first.first);
    }
    return *std::exchange(state_->status, std::nullopt);
}

void LinuxMainLoop::quit(int status) {
    {
        std::lock_guard lock(state_->wakeup->mutex);
        if (!state_->status) state_->status = status;
    }
    state_->wakeup->condition.notify_all();
}

}  // namespace tandrel
