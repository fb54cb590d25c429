#include "base/clock.h"

#include <limits>
#include <thread>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

using namespace std::chrono_literals;

TEST(Seconds, OddNumbersBecomeALengthOfTime) {
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    EXPECT_EQ(seconds(0.25), 250ms);
    EXPECT_EQ(seconds(-1), 0s);
    EXPECT_EQ(seconds(std::numeric_limits<double>::quiet_NaN()), 0s);
    EXPECT_EQ(seconds(-kInfinity), 0s);
    EXPECT_EQ(seconds(86400), 24h);
    EXPECT_EQ(seconds(1e300), 24h);
    EXPECT_EQ(seconds(kInfinity), 24h);
    EXPECT_EQ(toSeconds(1500ms), 1.5);
}

TEST(SystemClock, ASleepEndsWhenItIsStopped) {
    std::stop_source source;
    std::thread other([&] { source.request_stop(); });
    EXPECT_FALSE(systemClock().sleepFor(1h, source.get_token()));
    other.join();
    EXPECT_FALSE(systemClock().sleepFor(1h, source.get_token()));
    EXPECT_TRUE(systemClock().sleepFor(-1s));
}

}  // namespace
}  // namespace tandrel
