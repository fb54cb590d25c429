#pragma once

#include <functional>
#include <memory>

#include "app/app_snapshot.h"
#include "platform/main_loop.h"
#include "platform/power.h"

namespace tandrel {

// Around the computer's sleep: nothing is left held down on a phone, and when the phone has not
// come back some seconds after the waking, everything is connected afresh. Main thread.
class WakeCheck {
 public:
    struct Deeds {
        std::function<AppSnapshot()> snapshot;
        std::function<void()> letGo;  // of keys and buttons on every phone
        std::function<void()> reconnect;
    };

    // `power` and `loop` outlive it.
    WakeCheck(Power& power, MainLoop& loop, Deeds deeds);
    ~WakeCheck();
    WakeCheck(const WakeCheck&) = delete;
    WakeCheck& operator=(const WakeCheck&) = delete;

    static constexpr Duration kCheckAfterWake = std::chrono::seconds(10);
    // A phone that was set up is missed, unless the owner has paused.
    static bool isMissed(const AppSnapshot& now);

 private:
    void check() const;

    Power& power_;
    MainLoop& loop_;
    const Deeds deeds_;
    std::unique_ptr<Timer> timer_;
};

}  // namespace tandrel
