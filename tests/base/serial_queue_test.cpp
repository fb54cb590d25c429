#include "base/serial_queue.h"

#include <atomic>

#include <gtest/gtest.h>

#include "support/manual_clock.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;

class SerialQueueTest : public testing::Test {
 protected:
    auto note(char c) {
        return [this, c] { seen_ += c; };
    }
    // What ran so far, once everything that is due has run.
    std::string seen() {
        return queue_.sync([this] { return seen_; });
    }

    ManualClock clock_;
    std::string seen_;  // touched on the queue
    SerialQueue queue_{"test", clock_};
};

TEST_F(SerialQueueTest, RunsInOrder) {
    for (char c = 'a'; c <= 'e'; ++c) queue_.post(note(c));
    EXPECT_EQ(seen(), "abcde");
}

TEST_F(SerialQueueTest, RunsLaterWhenTheTimeHasComeInOrderOfTime) {
    queue_.postAfter(2s, note('c'));
    queue_.postAfter(1s, note('a'));
    queue_.postAfter(1s, note('b'));
    clock_.advance(1s - 1ns);
    EXPECT_EQ(seen(), "");
    clock_.advance(1ns);
    EXPECT_EQ(seen(), "ab");
    clock_.advance(1h);
    EXPECT_EQ(seen(), "abc");
}

TEST_F(SerialQueueTest, ATaskMayPostAndKnowsWhereItRuns) {
    EXPECT_FALSE(queue_.isCurrent());
    queue_.post([this] {
        queue_.assertCurrent();
        queue_.post(note('b'));
        seen_ += 'a';
    });
    seen();
    EXPECT_EQ(seen(), "ab");
}

TEST_F(SerialQueueTest, StopRunsWhatWasPostedAndDropsWhatIsLater) {
    const auto held = std::make_shared<int>(0);
    queue_.postAfter(1s, [this, held] { seen_ += 'x'; });
    queue_.post(note('a'));
    queue_.stop();
    EXPECT_EQ(seen_, "a");
    EXPECT_EQ(held.use_count(), 1);
    queue_.post(note('x'));
    queue_.stop();
    EXPECT_EQ(seen_, "a");
}

TEST_F(SerialQueueTest, AfterStopSyncRunsOnTheCallerOneAtATime) {
    queue_.stop();
    std::atomic<int> inside = 0;
    std::atomic<bool> together = false;
    const auto work = [&] {
        for (int i = 0; i < 1000; ++i) {
            queue_.sync([&] {
                queue_.assertCurrent();
                if (++inside > 1) together = true;
                --inside;
            });
        }
    };
    std::thread other(work);
    work();
    other.join();
    EXPECT_FALSE(together);
}

TEST_F(SerialQueueTest, SyncPassesTheResultAndTheExceptionOn) {
    EXPECT_EQ(queue_.sync([] { return std::make_unique<int>(7); }).operator*(), 7);
    EXPECT_THROW(queue_.sync([]() -> int { throw std::runtime_error("no"); }), std::runtime_error);
    EXPECT_EQ(seen(), "");
}

TEST_F(SerialQueueTest, WrongUseEndsTheProgram) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_DEATH(queue_.assertCurrent(), "not on the queue test");
    EXPECT_DEATH(queue_.sync([this] { queue_.sync([] {}); }), "sync on test from its own thread");
}

}  // namespace
}  // namespace tandrel
