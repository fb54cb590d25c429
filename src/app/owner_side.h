#pragma once

#include <functional>
#include <memory>

#include "app/autostart.h"
#include "app/first_copy.h"
#include "app/installer.h"
#include "app/owner_actions.h"
#include "app/owner_services.h"
#include "app/wake_check.h"
#include "app/wiring.h"
#include "platform/linux/clock_jump.h"
#include "platform/linux/login1_power.h"

namespace tandrel {

// Everything that the windows and the menu stand on: what they show and what they do. Main thread.
class OwnerSide {
 public:
    OwnerSide(Wiring& wiring, const AppInfo& info, MainLoop& loop, Clock& clock);
    ~OwnerSide();
    OwnerSide(const OwnerSide&) = delete;
    OwnerSide& operator=(const OwnerSide&) = delete;

    // After the engine has started.
    void start();
    // From now on a second start of the application calls `show` instead of staying. Main thread.
    void listenForCopies(std::function<void()> show);
    // Ends the polling and what runs; nothing of this calls anybody afterwards. Bounded.
    void stop();

    AppState& state() { return state_; }
    OwnerActions& actions() { return actions_; }
    const Autostart& autostart() const { return autostart_; }
    OwnerServices& services() { return services_; }
    // Where the phone test finds the engine.
    EnginePlace enginePlace() const;

 private:
    // The copy that is started next must not meet this one.
    void makeRoom();
    void quitSoon();

    Wiring& wiring_;
    MainLoop& loop_;
    OwnerServices services_;
    Installer installer_;
    const Autostart autostart_;
    AppState state_;
    std::unique_ptr<FirstCopy> firstCopy_;
    OwnerActions actions_;
    Login1Power told_;
    ClockJumpPower power_;
    WakeCheck wakeCheck_;
    std::unique_ptr<Timer> quitting_;
};

}  // namespace tandrel
