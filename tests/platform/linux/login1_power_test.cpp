#include "platform/linux/login1_power.h"

#include <gmock/gmock.h>

#include "platform/linux/fake_login1.h"
#include "platform/linux/linux_main_loop.h"
#include "platform/linux/private_bus.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;

class Login1PowerTest : public testing::Test {
 protected:
    PrivateBus bus_;
    LinuxMainLoop loop_;
};

TEST_F(Login1PowerTest, HoldsSleepUpUntilItIsPreparedAndAgainAfterWaking) {
    FakeLogin1 manager(bus_.address());
    auto power = std::make_unique<Login1Power>(loop_);
    const Inhibitor first = manager.awaitInhibitor();
    EXPECT_THAT(first.asked, ElementsAre("sleep", "Tandrel", "delay"));
    std::string seen;
    power->setOnSleep([&] { seen += first.isReleased(0ms) ? "released too soon " : "held "; });
    power->setOnWake([&] {
        seen += "awake";
        loop_.quit(0);
    });
    manager.prepareForSleep(true);
    manager.prepareForSleep(false);
    loop_.run();
    EXPECT_EQ(seen, "held awake");
    EXPECT_TRUE(first.isReleased());
    const Inhibitor second = manager.awaitInhibitor();
    EXPECT_THAT(second.asked, ElementsAre("sleep", "Tandrel", "delay"));
    EXPECT_FALSE(second.isReleased(0ms));
    power.reset();
    EXPECT_TRUE(second.isReleased());
}

TEST_F(Login1PowerTest, FindsAManagerThatStartsLaterOrAnew) {
    Login1Power power(loop_);
    for (int start = 0; start < 2; ++start) {
        FakeLogin1 manager(bus_.address());
        EXPECT_THAT(manager.awaitInhibitor().asked, ElementsAre("sleep", "Tandrel", "delay"));
        power.setOnWake([&] { loop_.quit(start); });
        manager.prepareForSleep(false);
        EXPECT_EQ(loop_.run(), start);
    }
}

TEST_F(Login1PowerTest, ABusThatIsMissingOrGoesAwayHarmsNothing) {
    const Login1Power connected(loop_);
    bus_.stop();
    const Login1Power after(loop_);
    const EnvironmentVariable nowhere("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    const Login1Power without(loop_);
    loop_.post([this] { loop_.quit(3); });
    EXPECT_EQ(loop_.run(), 3);
}

}  // namespace
}  // namespace tandrel
