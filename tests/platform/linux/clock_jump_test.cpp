#include "platform/linux/clock_jump.h"

#include <utility>

#include <gtest/gtest.h>

#include "platform/linux/linux_main_loop.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;

class ToldPower final : public Power {
 public:
    void setOnSleep(std::function<void()> willSleep) override { sleep = std::move(willSleep); }
    void setOnWake(std::function<void()> didWake) override { wake = std::move(didWake); }

    std::function<void()> sleep, wake;
};

class ClockJumpTest : public testing::Test {
 protected:
    ClockJumpTest() {
        power_.setOnWake([this] { ++wakes_; });
    }
    void pass(Duration monotonic, Duration asleep, Duration wallJump) {
        readings_.monotonic += monotonic;
        readings_.sinceBoot += monotonic + asleep;
        readings_.wall += monotonic + asleep + wallJump;
    }
    // How many wakes are told when so much time has passed.
    int look(Duration monotonic, Duration asleep = {}, Duration wallJump = {}) {
        pass(monotonic, asleep, wallJump);
        clock_.advance(5s);
        loop_.post([this] { loop_.quit(0); });
        loop_.run();
        return std::exchange(wakes_, 0);
    }

    ManualClock clock_;
    LinuxMainLoop loop_{clock_};
    ToldPower told_;
    ClockReadings readings_{1h, 1h, 10'000h};
    int wakes_ = 0;
    ClockJumpPower power_{told_, loop_, [this] { return readings_; }};
};

TEST_F(ClockJumpTest, TellsAWakeOnceWhenTheClocksPartAndNotBefore) {
    EXPECT_EQ(look(5s), 0);
    EXPECT_EQ(look(20s), 0) << "a busy computer";
    EXPECT_EQ(look(5s, 2s), 1) << "slept";
    EXPECT_EQ(look(5s), 0) << "once";
    EXPECT_EQ(look(5s, 1900ms), 0);
    EXPECT_EQ(look(5s, {}, 29s), 0) << "the clock was set right";
    EXPECT_EQ(look(5s, {}, 30s), 1) << "a virtual machine's pause";
    EXPECT_EQ(look(5s, {}, -2h), 0) << "set back";
    EXPECT_EQ(look(35s), 1) << "the program was stopped";
}

TEST_F(ClockJumpTest, DoesNotFindOutAgainWhatItWasTold) {
    pass(5s, 1h, {});
    told_.wake();
    EXPECT_EQ(look(5s), 1) << "the one that was told";
    EXPECT_EQ(look(5s), 0);
}

TEST_F(ClockJumpTest, TellsNobodyWhoHasGone) {
    power_.setOnWake({});
    EXPECT_EQ(look(5s, 1h), 0);
    EXPECT_FALSE(told_.wake);
}

TEST(ClockReadings, AreThoseOfARunningComputer) {
    const auto before = ClockReadings::now();
    const auto now = ClockReadings::now();
    EXPECT_LE(before.monotonic, now.monotonic);
    EXPECT_LE(now.monotonic, now.sinceBoot + 1s);
    EXPECT_GT(now.wall, 24h * 365 * 50);
}

}  // namespace
}  // namespace tandrel
