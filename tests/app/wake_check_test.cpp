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

TEST(WakeCheck, APhoneIsMissedThatWasSetUpAndIsNotAllBack) {
    const struct {
        bool connected;
        ScreenSource picture;
        bool paused;
        bool wasSetUp;
        bool missed;
    } rows[] = {
        {true, ScreenSource::airplay, false, true, false},
        {false, ScreenSource::airplay, false, true, true},
        {true, ScreenSource::none, false, true, true},
        {false, ScreenSource::airplay, true, true, false},
        {false, ScreenSource::airplay, false, false, false},
    };
    for (const auto& row : rows) {
        AppSnapshot now;
        now.phoneWasSetUp = row.wasSetUp;
        now.inputs.phoneConnected = row.connected;
        now.inputs.screenSource = row.picture;
        now.inputs.paused = row.paused;
        EXPECT_EQ(WakeCheck::isMissed(now), row.missed) << &row - rows;
    }
}

class WakeCheckTest : public testing::Test {
 protected:
    static AppSnapshot missing() {
        AppSnapshot now;
        now.phoneWasSetUp = true;
        now.inputs.screenSource = ScreenSource::airplay;
        return now;
    }
    // Lets the main thread work off what is due by now.
    void turn(Duration by) {
        clock_.advance(by);
        const auto end = loop_.after(Duration::zero(), [this] { loop_.quit(0); });
        loop_.run();
    }

    ManualClock clock_;
    LinuxMainLoop loop_{clock_};
    FakePower power_;
    AppSnapshot now_ = missing();
    int released_ = 0;
    int reconnected_ = 0;
    std::optional<WakeCheck> check_{
        std::in_place, power_, loop_,
        WakeCheck::Deeds{[this] { return now_; }, [this] { ++released_; },
                         [this] { ++reconnected_; }}};
};

TEST_F(WakeCheckTest, LooksTenSecondsAfterTheLastWaking) {
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
    power_.wake();
    now_.inputs.phoneConnected = true;
    turn(std::chrono::seconds(10));
    EXPECT_EQ(reconnected_, 0);
    now_ = missing();
    power_.wake();
    check_.reset();
    EXPECT_FALSE(power_.wake) << "nobody is called any more";
    turn(std::chrono::seconds(10));
    EXPECT_EQ(reconnected_, 0);
}

}  // namespace
}  // namespace tandrel
