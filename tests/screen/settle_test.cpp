#include "screen/settle.h"

#include <array>
#include <thread>

#include <gtest/gtest.h>

#include "screen/picture_watch.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

// Changes at times that the test sets, in ms after the wait's beginning; a time counts once it has
// come.
class Settling : public testing::Test {
 protected:
    double now() const { return millisecondsSince1970(clock.wallNow()); }
    ChangeTimesSince picture(std::vector<double> atMs) {
        return [this, start = now(), atMs = std::move(atMs)](double since) {
            std::vector<double> times;
            for (const double at : atMs) {
                if (start + at > since && start + at <= now()) times.push_back(start + at);
            }
            return times;
        };
    }

    SettleReply wait(const std::vector<double>& changes, SettleOptions options = {}) {
        if (options.since == 0) options.since = now();
        return waitToSettle(picture(changes), options, clock);
    }

    ManualClock clock{ManualClock::Sleep::passes};
};

constexpr double kPoll = 15.01;  // ms: how much later than due a wait may end

TEST_F(Settling, EndsWhenThePictureIsStillOrAtMax) {
    std::vector<double> animation;
    for (int at = 10; at < 5000; at += 100) animation.push_back(at);
    const struct {
        const char* name;
        std::vector<double> changes;
        SettleOptions options;
        bool settled;
        double waited;
        std::size_t seen;
        double last;  // change that was seen
    } rows[] = {
        {"a still picture: after first", {}, {}, true, 900, 0, 0},
        {"a changed one: after quiet", {100, 300, 500}, {}, true, 750, 3, 500},
        {"an animation: unsettled at max", animation, {}, false, 2500, 25, 2410},
        {"nothing before min", {10}, {.min = 600, .quiet = 50}, true, 600, 1, 10},
        {"max below min", {}, {.max = 100}, false, 100, 0, 0},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const SettleReply reply = wait(row.changes, row.options);
        EXPECT_EQ(reply.settled, row.settled);
        EXPECT_GE(reply.waited, row.waited);
        EXPECT_LT(reply.waited, row.waited + kPoll);
        EXPECT_EQ(reply.changes, row.seen);
        EXPECT_NEAR(reply.firstChange.value_or(0), row.changes.empty() ? 0 : row.changes[0], 0.01);
        EXPECT_NEAR(reply.still, reply.waited - row.last, 0.01);
    }
}

TEST_F(Settling, ChangesFromBeforeTheCallCount) {
    SettleOptions options;
    options.since = now();
    const ChangeTimesSince source = picture({200});
    clock.advance(seconds(2));
    const SettleReply reply = waitToSettle(source, options, clock);
    EXPECT_TRUE(reply.settled);
    EXPECT_EQ(reply.waited, 0);
    EXPECT_NEAR(reply.firstChange.value_or(0), 200, 0.01);
    EXPECT_NEAR(reply.still, 1800, 0.01);

    // So does the time from before the call: `max` had passed when this one came.
    options.since = now();
    const ChangeTimesSince restless = picture({2550});
    clock.advance(seconds(2.6));
    EXPECT_FALSE(waitToSettle(restless, options, clock).settled);
}

// The wall clock may be set back while a client waits.
TEST_F(Settling, TheWaitIsBoundedWhateverTheWallClockSays) {
    SettleOptions options;
    options.since = now() + 3'600'000;
    const SettleReply reply = wait({}, options);
    EXPECT_FALSE(reply.settled);
    EXPECT_GE(reply.waited, 2500);
    EXPECT_LT(reply.waited, 2500 + kPoll);
}

TEST(SettleStop, EndsTheWaitAtOnce) {
    ManualClock clock(ManualClock::Sleep::waits);
    SettleReply reply;
    std::jthread waiter([&](const std::stop_token& stop) {
        SettleOptions options;
        options.since = millisecondsSince1970(clock.wallNow());
        reply = waitToSettle([](double) { return std::vector<double>(); }, options, clock, stop);
    });
    clock.awaitSleepers(1);
    waiter.request_stop();
    waiter.join();
    EXPECT_FALSE(reply.settled);
    EXPECT_EQ(reply.waited, 0);
}

TEST(SettleOptions, AreReadFromAQueryWithinBounds) {
    constexpr double kNow = 1'700'000'000'000;
    using Query = std::map<std::string, std::string>;
    const std::tuple<const char*, Query, std::array<double, 5>> rows[] = {
        {"defaults", {}, {kNow, 250, 250, 2500, 900}},
        {"all given",
         {{"since", "1699999999000.5"}, {"min", "1"}, {"quiet", "2"}, {"max", "3"}, {"first", "4"}},
         {1699999999000.5, 1, 2, 3, 4}},
        {"not numbers",
         {{"since", "x"}, {"min", ""}, {"quiet", "nan"}, {"max", "12s"}, {"first", "0x10"}},
         {kNow, 250, 250, 2500, 900}},
        {"negative",
         {{"since", "-5"}, {"min", "-1"}, {"quiet", "-inf"}, {"max", "-1"}, {"first", "-0"}},
         {0, 0, 0, 0, 0}},
        {"huge",
         {{"since", "1e300"}, {"min", "1e9"}, {"quiet", "inf"}, {"max", "60001"}, {"first", "1e9"}},
         {kNow, 60000, 60000, 60000, 60000}},
    };
    for (const auto& [name, query, read] : rows) {
        const auto [since, min, quiet, max, first] = SettleOptions::fromQuery(query, kNow);
        EXPECT_EQ((std::array{since, min, quiet, max, first}), read) << name;
    }
}

TEST(SettleReply, AsJson) {
    EXPECT_EQ(dumpJson(SettleReply{900.4, 1'700'000'000'000, true, 0, {}, 900.4}.json()),
              R"({"changes":0,"first_change_ms":null,"settled":true,"since_ms":1700000000000,)"
              R"("still_ms":900,"waited_ms":900})");
    EXPECT_EQ(dumpJson(SettleReply{2500, 5, false, 3, 10.5, 0}.json()),
              R"({"changes":3,"first_change_ms":11,"settled":false,"since_ms":5,)"
              R"("still_ms":0,"waited_ms":2500})");
}

}  // namespace
}  // namespace tandrel
