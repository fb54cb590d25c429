#include "platform/linux/linux_main_loop.h"

#include <string>
#include <thread>

#include <gtest/gtest.h>

#include "support/manual_clock.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;

class LinuxMainLoopTest : public testing::Test {
 protected:
    // Runs everything that is due now.
    void settle() {
        loop_.post([this] { loop_.quit(0); });
        loop_.run();
    }
    auto note(char c) {
        return [this, c] { seen_ += c; };
    }
    // What has been noted by then, step by step.
    void expectNotes(const std::vector<std::pair<Duration, const char*>>& steps) {
        for (const auto& [passes, seen] : steps) {
            clock_.advance(passes);
            settle();
            settle();
            EXPECT_EQ(seen_, seen);
        }
    }

    ManualClock clock_;
    LinuxMainLoop loop_{clock_};
    std::string seen_;
};

TEST_F(LinuxMainLoopTest, TasksRunInCallOrderOnTheThreadThatRuns) {
    std::thread::id ran;
    std::thread other([&] {
        loop_.post(note('a'));
        loop_.post(note('b'));
        loop_.post([&] { ran = std::this_thread::get_id(); });
        loop_.post([&] { loop_.quit(7); });
    });
    EXPECT_EQ(loop_.run(), 7);
    other.join();
    EXPECT_EQ(seen_, "ab");
    EXPECT_EQ(ran, std::this_thread::get_id());
}

TEST_F(LinuxMainLoopTest, TimersRunWhenTheirTimeHasComeInOrderOfTime) {
    const auto late = loop_.after(2s, note('c'));
    const auto soon = loop_.after(1s, note('a'));
    auto dropped = loop_.after(1s, note('x'));
    const auto sameTime = loop_.after(1s, note('b'));
    const auto forever = loop_.after(Duration::max(), note('x'));
    const auto past = loop_.after(-1h, note('0'));
    expectNotes({{1s - 1ns, "0"}});
    dropped.reset();
    expectNotes({{1ns, "0ab"}, {1s, "0abc"}, {1h, "0abc"}});
}

TEST_F(LinuxMainLoopTest, ARepeatingTimerKeepsItsBeatAndSkipsWhatItMissed) {
    const auto timer = loop_.every(10s, note('a'));
    // The beat is counted from the first turn, not from when it ran.
    expectNotes({{14s, "a"}, {6s, "aa"}, {100s, "aaa"}});
}

TEST_F(LinuxMainLoopTest, ATimerMayEndItselfFromItsTask) {
    std::unique_ptr<Timer> timer;
    const auto held = std::make_shared<int>(0);
    timer = loop_.every(1s, [&, held] {
        timer.reset();
        seen_ += static_cast<char>('0' + held.use_count());  // the task is alive while it runs
    });
    expectNotes({{1s, "2"}, {5s, "2"}});
    EXPECT_EQ(held.use_count(), 1);
}

TEST_F(LinuxMainLoopTest, PostedTasksAndABusyTimerTakeTurns) {
    const auto timer = loop_.every(1ms, [this] { clock_.advance(1ms); });
    clock_.advance(1ms);
    settle();  // would not return if the timer, due again each time, always went first
}

TEST_F(LinuxMainLoopTest, AWaitingLoopHearsOfTimeAndTasks) {
    const auto timer = loop_.after(1s, [this] { loop_.quit(3); });
    std::thread other([this] {
        loop_.post(note('a'));
        clock_.advance(1s);
    });
    EXPECT_EQ(loop_.run(), 3);
    other.join();
}

TEST_F(LinuxMainLoopTest, QuitEndsBeforeTheNextTaskAndItsFirstStatusHolds) {
    loop_.post([this] {
        loop_.quit(1);
        loop_.quit(2);
    });
    loop_.post(note('x'));
    EXPECT_EQ(loop_.run(), 1);
    EXPECT_EQ(seen_, "");
}

TEST(LinuxMainLoopEnd, DropsTasksAndOutlivedTimersDoNothing) {
    ManualClock clock;
    const auto held = std::make_shared<int>(0);
    std::unique_ptr<Timer> timer;
    {
        LinuxMainLoop loop(clock);
        loop.post([held] {});
        timer = loop.after(1s, [held] {});
        EXPECT_EQ(held.use_count(), 3);
    }
    EXPECT_EQ(held.use_count(), 1);
    timer.reset();
}

}  // namespace
}  // namespace tandrel
