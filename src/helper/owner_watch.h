#pragma once

#include <atomic>
#include <thread>

#include "helper/tool.h"

namespace tandrel {

// While an action is under way: asks the engine from time to time whether the owner is being asked,
// and tells the app how many seconds the owner has left.
class OwnerWatch {
 public:
    // `call` outlives this.
    explicit OwnerWatch(const ToolCall& call);
    // No progress is told after this.
    ~OwnerWatch();
    OwnerWatch(const OwnerWatch&) = delete;
    OwnerWatch& operator=(const OwnerWatch&) = delete;

    // Whether the owner was being asked when the engine last said anything.
    bool isOwnerAsked() const { return isOwnerAsked_; }

 private:
    void watch(const std::stop_token& stop);
    void tell(double secondsLeft);

    const ToolCall& call_;
    const TimePoint start_ = systemClock().now();
    std::atomic<bool> isOwnerAsked_ = false;
    std::jthread thread_;
};

}  // namespace tandrel
