#include "platform/linux/login1_power.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

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

TEST_F(Login1PowerTest, TheComputerWaitsUntilSleepIsPrepared) {
    FakeLogin1 manager(bus_.address());
    Login1Power power(loop_);
    const Inhibitor inhibitor = manager.awaitInhibitor();
    EXPECT_THAT(inhibitor.asked, ElementsAre("sleep", "Tandrel", "delay"));
    bool releasedTooSoon = true;
    power.setOnSleep([&] {
        releasedTooSoon = inhibitor.isReleased(0ms);
        loop_.quit(0);
    });
    manager.prepareForSleep(true);
    loop_.run();
    EXPECT_FALSE(releasedTooSoon);
    EXPECT_TRUE(inhibitor.isReleased());
}

TEST_F(Login1PowerTest, AfterWakingItHoldsTheNextSleepUp) {
    FakeLogin1 manager(bus_.address());
    Login1Power power(loop_);
    std::string seen;
    power.setOnSleep([&] { seen += 's'; });
    power.setOnWake([&] {
        seen += 'w';
        loop_.quit(0);
    });
    const Inhibitor first = manager.awaitInhibitor();
    manager.prepareForSleep(true);
    manager.prepareForSleep(false);
    loop_.run();
    EXPECT_EQ(seen, "sw");
    const Inhibitor second = manager.awaitInhibitor();
    EXPECT_THAT(second.asked, ElementsAre("sleep", "Tandrel", "delay"));
    EXPECT_FALSE(second.isReleased(0ms));
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

TEST_F(Login1PowerTest, GivesTheInhibitorBackAtTheEnd) {
    FakeLogin1 manager(bus_.address());
    Inhibitor inhibitor;
    {
        Login1Power power(loop_);
        inhibitor = manager.awaitInhibitor();
    }
    EXPECT_TRUE(inhibitor.isReleased());
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
