#pragma once

#include <memory>
#include <optional>
#include <stop_token>

#include "base/clock.h"
#include "payments/asker.h"

namespace tandrel {

// Where the owner's answer to one question is laid down and waited for. The first answer counts.
class AnswerBox {
 public:
    explicit AnswerBox(Clock& clock) : clock_(clock) { clock_.attach(wakeup_); }

    // Any thread.
    void put(ApprovalAnswer answer) {
        {
            std::lock_guard lock(wakeup_->mutex);
            if (!answer_) answer_ = answer;
        }
        wakeup_->condition.notify_all();
    }

    // Blocks until there is an answer, the deadline passes or the question is withdrawn; the last
    // two are a time-out.
    ApprovalAnswer wait(TimePoint deadline, const std::stop_token& withdrawn) {
        const std::stop_callback wake(withdrawn, [this] {
            {
                std::lock_guard taken(wakeup_->mutex);
            }
            wakeup_->condition.notify_all();
        });
        std::unique_lock lock(wakeup_->mutex);
        while (!answer_ && !withdrawn.stop_requested() && clock_.now() < deadline) {
            clock_.waitUntil(lock, *wakeup_, deadline);
        }
        if (withdrawn.stop_requested()) return ApprovalAnswer::timeout;
        return answer_.value_or(ApprovalAnswer::timeout);
    }

 private:
    Clock& clock_;
    const std::shared_ptr<Wakeup> wakeup_ = std::make_shared<Wakeup>();
    std::optional<ApprovalAnswer> answer_;  // under wakeup_->mutex
};

}  // namespace tandrel
