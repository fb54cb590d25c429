#include "app/wake_check.h"

#include <gtest/gtest.h>

#include "platform/linux/linux_main_loop.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

class FakePower final : public Power {
 public:
    void setOnSleep(std::function<void()> willSleep) override { sleep = std::move(willSleep); }
    void setOnWake(std::function<void()> didWake) override { wake = std::move(didWake); }
    std::function<void()> sleep;
    std::function<void()> wake;
};

AppSnapshot working() {
    AppSnapshot now;
    now.phoneWasSetUp = true;
    now.inputs.phoneConnected = true;
    now.inputs.screenSource = ScreenSource::airplay;
    return now;
}

TEST(WakeCheck, APhoneIsMissedThatWasSetUpAndIsNotAllBack) {
    struct Row {
        const char* name;
        void (*change)(AppSnapshot&);
        bool missed;
    };
    const Row rows[] = {
        {"all there", [](AppSnapshot&) {}, false},
        {"no Bluetooth", [](AppSnapshot& now) { now.inputs.phoneConnected = false; }, true},
        {"no picture", [](AppSnapshot& now) { now.inputs.screenSource = ScreenSource::none; },
         true},
        {"paused",
         [](AppSnapshot& now) {
             now.inputs.phoneConnected = false;
             now.inputs.paused = true;
         },
         false},
        {"never set up",
         [](AppSnapshot& now) {
             now.inputs.phoneConnected = false;
             now.phoneWasSetUp = false;
         },
         false},
    };
    for (const Row& row : rows) {
        AppSnapshot now = working();
        row.change(now);
        EXPECT_EQ(WakeCheck::isMissed(now), row.missed) << row.name;
    }
}

class WakeCheckTest : public testing::Test {
 protected:
    // Lets the main thread work off what is due by now.
    void turn(Duration by) {
        clock_.advance(by);
        const auto end = loop_.after(Duration::zero(), [this] { loop_.quit(0); });
        loop_.run();
    }

    ManualClock clock_;
    LinuxMainLoop loop_{clock_};
    FakePower power_;
    AppSnapshot now_ = working();
    int released_ = 0;
    int reconnected_ = 0;
    std::optional<WakeCheck> check_{
        std::in_place, power_, loop_,
        WakeCheck::Deeds{[this] { return now_; }, [this] { ++released_; },
                         [this] { ++reconnected_; }}};
};

TEST_F(WakeCheckTest, LooksTenSecondsAfterTheLastWaking) {
    now_.inputs.phoneConnected = false;
    power_.sleep();
    EXPECT_EQ(released_, 1);
    power_.wake();
    turn(std::chrono::milliseconds(9999));
    EXPECT_EQ(reconnected_, 0);
    power_.wake();
    turn(std::chrono::milliseconds(9999));
    EXPECT_EQ(reconnected_, 0) << "the second waking counts";
    turn(std::chrono::milliseconds(1));
    EXPECT_EQ(reconnected_, 1);
    turn(std::chrono::hours(1));
    EXPECT_EQ(reconnected_, 1);
}

TEST_F(WakeCheckTest, APhoneThatIsBackByThenIsLeftInPeace) {
    now_.inputs.phoneConnected = false;
    power_.wake();
    now_.inputs.phoneConnected = true;
    turn(std::chrono::seconds(10));
    EXPECT_EQ(reconnected_, 0);
    now_.inputs.phoneConnected = false;
    power_.wake();
    check_.reset();
    EXPECT_FALSE(power_.wake) << "nobody is called any more";
    turn(std::chrono::seconds(10));
    EXPECT_EQ(reconnected_, 0);
}

}  // namespace
}  // namespace tandrel
