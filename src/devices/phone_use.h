#pragma once

#include <condition_variable>
#include <map>
#include <memory>
#include <mutex>
#include <stop_token>

#include "base/clock.h"
#include "base/uuid.h"

namespace tandrel {

// Keeps matching and actions on one phone apart: any number of actions may be under way on a phone,
// or one probe of its pointer, never both. Any thread.
class PhoneUse {
    struct State;

 public:
    // Ends what it stands for when it goes.
    class Hold {
     public:
        Hold(std::shared_ptr<State> state, const Uuid& host, bool probe)
            : state_(std::move(state)), host_(host), probe_(probe) {}
        ~Hold();
        Hold(const Hold&) = delete;
        Hold& operator=(const Hold&) = delete;

     private:
        const std::shared_ptr<State> state_;
        const Uuid host_;
        const bool probe_;
    };

    explicit PhoneUse(Clock& clock);

    // Waits until the phone is free for it, at most `patience`; nothing when that did not come or
    // `stop` was requested.
    std::unique_ptr<Hold> act(const Uuid& host, Duration patience, std::stop_token stop);
    std::unique_ptr<Hold> probe(const Uuid& host, Duration patience, std::stop_token stop);

 private:
    std::unique_ptr<Hold> take(const Uuid& host, bool probe, Duration patience,
                               const std::stop_token& stop);

    Clock& clock_;
    const std::shared_ptr<State> state_;
};

}  // namespace tandrel
