#include "base/serial_queue.h"

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <deque>
#include <map>

#include <pthread.h>

namespace tandrel {

struct SerialQueue::State {
    explicit State(Clock& timeSource) : clock(timeSource) {}

    Clock& clock;
    std::shared_ptr<Wakeup> wakeup = std::make_shared<Wakeup>();
    std::deque<Task> ready;                 // under wakeup->mutex
    std::multimap<TimePoint, Task> later;   // under wakeup->mutex; equal times keep their order
    bool stopping = false;                  // under wakeup->mutex
    std::mutex afterStop;                   // callers of `sync` once the thread has gone
    std::atomic<std::thread::id> runner{};  // the thread that runs tasks right now

    // Moves what is due to `ready`. Under wakeup->mutex. Also done before a task is posted, so that
    // what was due earlier runs earlier, although the thread may not have woken for it yet.
    void collectDue() {
        const TimePoint now = clock.now();
        while (!later.empty() && later.begin()->first <= now) {
            ready.push_back(std::move(later.begin()->second));
            later.erase(later.begin());
        }
    }

    void run() {
        runner = std::this_thread::get_id();
        std::unique_lock lock(wakeup->mutex);
        while (true) {
            collectDue();
            if (!ready.empty()) {
                Task task = std::move(ready.front());
                ready.pop_front();
                lock.unlock();
                task();
                task = nullptr;  // what the task holds goes before the lock is taken again
                lock.lock();
            } else if (stopping) {
                runner = std::thread::id{};  // a later thread may get the same one
                return;
            } else {
                clock.waitUntil(lock, *wakeup,
                                later.empty() ? TimePoint::max() : later.begin()->first);
            }
        }
    }
};

SerialQueue::SerialQueue(std::string label, Clock& clock)
    : label_(std::move(label)), state_(std::make_shared<State>(clock)) {
    clock.attach(state_->wakeup);
    thread_ = std::thread([state = state_] { state->run(); });
    constexpr std::size_t kLongestThreadName = 15;  // pthread_setname_np
    pthread_setname_np(thread_.native_handle(), label_.substr(0, kLongestThreadName).c_str());
}

SerialQueue::~SerialQueue() { stop(); }

void SerialQueue::post(Task task) {
    {
        std::lock_guard lock(state_->wakeup->mutex);
        if (state_->stopping) return;
        state_->collectDue();
        state_->ready.push_back(std::move(task));
    }
    state_->wakeup->condition.notify_all();
}

void SerialQueue::postAfter(Duration delay, Task task) {
    {
        std::lock_guard lock(state_->wakeup->mutex);
        if (state_->stopping) return;
        state_->later.emplace(state_->clock.now() + delay, std::move(task));
    }
    state_->wakeup->condition.notify_all();
}

void SerialQueue::syncTask(Task task) {
    if (isCurrent()) {
        std::fprintf(stderr, "sync on %s from its own thread\n", label_.c_str());
        std::abort();
    }
    {
        std::unique_lock lock(state_->wakeup->mutex);
        if (!state_->stopping) {
            state_->collectDue();
            state_->ready.push_back(std::move(task));
            lock.unlock();
            state_->wakeup->condition.notify_all();
            return;
        }
    }
    std::lock_guard oneAtATime(state_->afterStop);
    if (thread_.joinable()) thread_.join();
    state_->runner = std::this_thread::get_id();
    task();
    state_->runner = std::thread::id{};
}

bool SerialQueue::isCurrent() const { return state_->runner == std::this_thread::get_id(); }

void SerialQueue::assertCurrent() const {
    if (isCurrent()) return;
    std::fprintf(stderr, "not on the queue %s\n", label_.c_str());
    std::abort();
}

void SerialQueue::stop() {
    {
        std::lock_guard lock(state_->wakeup->mutex);
        state_->stopping = true;
        state_->later.clear();
    }
    state_->wakeup->condition.notify_all();
    std::lock_guard oneAtATime(state_->afterStop);
    if (thread_.joinable()) thread_.join();
}

}  // namespace tandrel
