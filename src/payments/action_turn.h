#pragma once

#include <memory>
#include <stop_token>

#include "base/clock.h"

namespace tandrel {

// Lets one thread at a time through: a binary semaphore whose wait ends at a deadline or when it is
// called off.
class ActionTurn {
 public:
    explicit ActionTurn(Clock& clock);

    enum class Outcome { taken, timedOut, stopped };
    Outcome take(TimePoint deadline, const std::stop_token& stop);
    // By the thread that took it, when it is through.
    void give();

    // Gives the turn back at the end of a scope.
    class Holder {
     public:
        explicit Holder(ActionTurn& turn) : turn_(turn) {}
        ~Holder() { turn_.give(); }
        Holder(const Holder&) = delete;
        Holder& operator=(const Holder&) = delete;

     private:
        ActionTurn& turn_;
    };

 private:
    Clock& clock_;
    const std::shared_ptr<Wakeup> wakeup_ = std::make_shared<Wakeup>();
    bool taken_ = false;  // under wakeup_'s mutex
};

}  // namespace tandrel
