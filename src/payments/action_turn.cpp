#include "payments/action_turn.h"

namespace tandrel {

ActionTurn::ActionTurn(Clock& clock) : clock_(clock) { clock_.attach(wakeup_); }

ActionTurn::Outcome ActionTurn::take(TimePoint deadline, const std::stop_token& stop) {
    // Passing through the mutex makes sure that a waiter either sees the request or is already
    // waiting when the notification comes. Declared before the lock, since its end waits for a
    // callback under way, which needs that mutex.
    const std::stop_callback wake(stop, [this] {
        {
            const std::lock_guard passed(wakeup_->mutex);
        }
        wakeup_->condition.notify_all();
    });
    std::unique_lock lock(wakeup_->mutex);
    while (!stop.stop_requested()) {
        if (!taken_) {
            taken_ = true;
            return Outcome::taken;
        }
        if (clock_.now() >= deadline) return Outcome::timedOut;
        clock_.waitUntil(lock, *wakeup_, deadline);
    }
    return Outcome::stopped;
}

void ActionTurn::give() {
    {
        const std::lock_guard lock(wakeup_->mutex);
        taken_ = false;
    }
    wakeup_->condition.notify_all();
}

}  // namespace tandrel
