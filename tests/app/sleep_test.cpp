#include <thread>

#include <gmock/gmock.h>

#include "app/owner_side.h"
#include "app/running_program.h"
#include "engine/running_engine.h"
#include "platform/linux/fake_login1.h"
#include "platform/linux/private_bus.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

// A login manager, and the owner's side on a whole engine with a virtual phone. The test's thread
// is the main thread, whose timers run by a clock that the test turns.
class SleepTest : public testing::Test {
 protected:
    SleepTest() {
        engine_.awaitMatched();
        owner_.emplace(engine_.wiring(), builtApp(), loop_, systemClock());
        owner_->start();
        inhibitor_ = manager_.awaitInhibitor();
    }

    // Runs the main thread until the manager sees that nothing holds the computer up any more.
    bool sleepIsPrepared() {
        bool released = false;
        const std::jthread watching([&] {
            released = inhibitor_.isReleased();
            loop_.quit(0);
        });
        loop_.run();
        return released;
    }
    // Runs the main thread until the model fits, but not for ever.
    bool await(const std::function<bool(const AppSnapshot&)>& fits) {
        const auto isSo = [&] {
            turn(Duration::zero());
            return fits(owner_->state().snapshot());
        };
        return eventually(isSo, std::chrono::seconds(60));
    }
    // Lets the main thread work off what was posted and what is due by now.
    void turn(Duration by) {
        clock_.advance(by);
        // One due timer and one posted task are worked off in turn.
        constexpr int kMostTimersDue = 8;
        for (int i = 0; i < kMostTimersDue; ++i) {
            loop_.post([this] { loop_.quit(0); });
            loop_.run();
        }
    }

    PrivateBus bus_;
    FakeLogin1 manager_{bus_.address()};
    ManualClock clock_;
    LinuxMainLoop loop_{clock_};
    RunningEngine engine_;
    std::optional<OwnerSide> owner_;
    Inhibitor inhibitor_;
};

TEST_F(SleepTest, TheComputerSleepsOnlyWhenTheButtonIsReleased) {
    const int before = engine_.phone().record().pointerMoves;
    ClientResponse drag;
    const Json slow = {{"x1", 0.5}, {"y1", 0.6},      {"x2", 0.5},
                       {"y2", 0.7}, {"duration", 60}, {"fraction", true}};
    std::jthread dragging([&] { drag = engine_.post("/swipe", slow); });
    constexpr int kWellOnItsWay = 10;
    ASSERT_TRUE(engine_.phone().awaitRecord([&](const VirtualPhoneRecord& record) {
        return record.pointerMoves > before + kWellOnItsWay;
    }));
    ASSERT_TRUE(engine_.phone().record().touches.empty()) << "the button is down";
    manager_.prepareForSleep(true);
    EXPECT_TRUE(sleepIsPrepared());
    EXPECT_EQ(engine_.phone().record().touches.size(), 1U) << "up before the computer slept";
    dragging.join();
    EXPECT_EQ(drag.status, 503);
    EXPECT_EQ(engine_.post("/home", Json::object()).status, 200) << "later actions work";
}

TEST_F(SleepTest, APhoneThatIsNotBackTenSecondsAfterWakingIsReconnected) {
    ASSERT_TRUE(await([](const AppSnapshot& now) { return now.isHealthy(); }));
    manager_.prepareForSleep(true);
    ASSERT_TRUE(sleepIsPrepared());
    engine_.phone().disconnectBluetooth();
    ASSERT_TRUE(await([](const AppSnapshot& now) { return !now.inputs.phoneConnected; }));
    testing::internal::CaptureStderr();
    manager_.prepareForSleep(false);
    inhibitor_ = manager_.awaitInhibitor();
    turn(Duration::zero());
    EXPECT_TRUE(inhibitor_.end) << "the next sleep is held up, too";
    turn(std::chrono::seconds(10));
    EXPECT_THAT(testing::internal::GetCapturedStderr(),
                testing::HasSubstr("wake: iPhone not back after 10 s, reconnecting"));
    engine_.phone().connectBluetooth();
    EXPECT_TRUE(await([](const AppSnapshot& now) { return now.isHealthy(); }));
    EXPECT_EQ(engine_.post("/home", Json::object()).status, 200);
}

}  // namespace
}  // namespace tandrel
