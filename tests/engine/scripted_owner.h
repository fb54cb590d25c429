#pragma once

#include <atomic>
#include <functional>
#include <vector>

#include "base/mutex.h"
#include "payments/asker.h"

namespace tandrel {

// An owner who answers every question as the test says and remembers what was asked.
class ScriptedOwner final : public Asker {
 public:
    // Gets the question's number, from 0.
    using Reaction = std::function<ApprovalAnswer(std::size_t number, TimePoint deadline,
                                                  const std::stop_token& withdrawn)>;

    ScriptedOwner() { always(ApprovalAnswer::deny); }

    void always(ApprovalAnswer answer) {
        react = [answer](std::size_t, TimePoint, const std::stop_token&) { return answer; };
    }

    ApprovalAnswer ask(const ApprovalRequest& request, TimePoint deadline,
                       std::stop_token withdrawn) override {
        std::size_t number = 0;
        {
            MutexLock lock(mutex_);
            number = asked_.size();
            asked_.push_back(request);
        }
        if (++open_ > 1) overlapped = true;
        const ApprovalAnswer answer = react(number, deadline, withdrawn);
        --open_;
        return answer;
    }

    std::vector<ApprovalRequest> asked() const {
        MutexLock lock(mutex_);
        return asked_;
    }

    Reaction react;                        // set while nobody asks
    std::atomic<bool> overlapped = false;  // two questions were open at once

 private:
    std::atomic<int> open_ = 0;
    mutable Mutex mutex_;
    std::vector<ApprovalRequest> asked_ OWNED_BY(mutex_);
};

}  // namespace tandrel
