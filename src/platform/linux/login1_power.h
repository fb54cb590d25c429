#pragma once

#include <memory>
#include <thread>

#include <sdbus-c++/sdbus-c++.h>

#include "base/file_descriptor.h"
#include "platform/main_loop.h"
#include "platform/power.h"

namespace tandrel {

// Sleep and wake as systemd's login manager tells them (org.freedesktop.login1.Manager). While it
// lives it holds a "delay" inhibitor, so that the computer waits for `willSleep`, up to the
// manager's own limit of some seconds. Without the bus nothing is ever called, which is logged
// once.
class Login1Power final : public Power {
 public:
    // Main thread; the loop outlives this object.
    explicit Login1Power(MainLoop& loop);
    ~Login1Power() override;
    Login1Power(const Login1Power&) = delete;
    Login1Power& operator=(const Login1Power&) = delete;

    void setOnSleep(std::function<void()> willSleep) override;
    void setOnWake(std::function<void()> didWake) override;

 private:
    struct Callbacks {  // main thread
        std::function<void()> willSleep;
        std::function<void()> didWake;
    };

    // These run on the thread "login1".
    void watch();
    void subscribe();
    void takeInhibitor();
    void prepareForSleep(bool goingToSleep);

    MainLoop& loop_;
    const std::shared_ptr<Callbacks> callbacks_ = std::make_shared<Callbacks>();
    std::unique_ptr<sdbus::IConnection> bus_;
    std::unique_ptr<sdbus::IProxy> manager_;  // thread "login1"
    std::shared_ptr<FileDescriptor>
        inhibitor_;  // thread "login1"; the computer waits while it is open
    std::thread thread_;
};

}  // namespace tandrel
