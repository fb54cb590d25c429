#pragma once

#include <functional>

// The computer's sleep.
namespace tandrel {

class Power {
 public:
    virtual ~Power() = default;
    // Both are called on the main thread. `willSleep` must be done when it returns: the computer
    // sleeps afterwards. Set once; empty functions end the calls.
    virtual void setOnSleep(std::function<void()> willSleep) = 0;
    virtual void setOnWake(std::function<void()> didWake) = 0;
};

}  // namespace tandrel
