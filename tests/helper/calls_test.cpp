#include "helper/calls.h"

#include <atomic>
#include <future>
#include <set>

#include "helper/app_side.h"
#include "helper/fake_engine.h"

namespace tandrel {
namespace {

using testing::IsEmpty;

Json callWithToken(const Json& id, std::string_view tool, const Json& token) {
    Json message = callRequest(id, tool);
    message["params"]["_meta"]["progressToken"] = token;
    return message;
}

class UnderWay : public testing::Test {
 protected:
    // Lets a request of `path` wait until `release`.
    void hold(const std::string& path) {
        engine_.answer(path, [released = released_.get_future().share()](const HTTPRequest&) {
            released.wait();
            return HTTPResponse::json({{"ok", true}});
        });
    }
    void release() { released_.set_value(); }

    // Lets a request of `path` wait until the helper has closed it.
    void holdUntilClosed(const std::string& path) {
        engine_.answer(path, [this](const HTTPRequest& request) {
            awaitClientGone(request);
            closed_.set_value();
            return HTTPResponse::error("nobody reads this");
        });
    }
    void awaitClosed() { closed_.get_future().get(); }

    std::promise<void> released_;
    std::promise<void> closed_;
    FakeEngine engine_;
};

TEST_F(UnderWay, CallsAreAnsweredAsTheyFinishAndAnIdIsFreeAgainOnlyThen) {
    hold("/home");
    AppSide app;
    app.send(callRequest("slow", "iphone_go_home"));
    engine_.await("/home");
    app.send(callRequest("slow", "iphone_get_status"));
    EXPECT_EQ(app.receive().at("error").at("code"), -32600);
    app.send(callRequest("quick", "iphone_get_status"));
    app.send(request("list", "tools/list"));
    const Json ids = {app.receive().at("id"), app.receive().at("id")};
    EXPECT_THAT(ids, testing::UnorderedElementsAre("quick", "list"));
    release();
    EXPECT_EQ(app.receive().at("id"), "slow");
    app.send(callRequest("slow", "iphone_get_status"));
    EXPECT_TRUE(app.receive().contains("result"));
}

TEST_F(UnderWay, TooManyCallsAreRefusedAtOnceAndTheOthersAnsweredOnce) {
    hold("/home");
    AppSide app;
    constexpr int kThreads = WorkerThreads::kMostThreads;
    constexpr int kMost = kThreads + static_cast<int>(WorkerThreads::kMostWaiting);
    for (int i = 0; i < kMost + 1; ++i) {
        app.send(callRequest(i, "iphone_go_home"));
        if (i + 1 == kThreads) engine_.await("/home", kThreads);
    }
    const Json refusal = app.receive();
    EXPECT_EQ(refusal.at("id"), kMost);
    EXPECT_EQ(refusal.at("result").at("isError"), true);
    release();
    std::set<int> ids;
    for (int i = 0; i < kMost; ++i) {
        const Json answer = app.receive();
        EXPECT_EQ(answer.at("result").at("isError"), false);
        ids.insert(answer.at("id").get<int>());
    }
    EXPECT_EQ(ids.size(), static_cast<std::size_t>(kMost));
    app.endInput();
    EXPECT_THAT(app.receiveRest(), IsEmpty());
}

TEST_F(UnderWay, CancellingClosesTheRequestAndIsNotAnswered) {
    holdUntilClosed("/tap");
    AppSide app;
    app.send(callRequest(7, "iphone_tap", {{"x", 0.5}, {"y", 0.5}, {"units", "fractions"}}));
    engine_.await("/tap");
    app.send(cancelled("7"));  // another id: text is not a number
    app.send(cancelled(7));
    awaitClosed();
    app.send(request(8, "ping"));
    EXPECT_EQ(app.receive().at("id"), 8);
    app.endInput();
    EXPECT_THAT(app.receiveRest(), IsEmpty());
}

TEST_F(UnderWay, ACancelledCallThatWaitsForAThreadIsNeverSent) {
    hold("/home");
    AppSide app;
    const int threads = static_cast<int>(WorkerThreads::kMostThreads);
    for (int i = 0; i < threads; ++i) app.send(callRequest(i, "iphone_go_home"));
    app.send(callRequest("late", "iphone_type", {{"text", "x"}}));
    app.send(cancelled("late"));
    app.send(request("seen", "ping"));
    EXPECT_EQ(app.receive().at("id"), "seen");
    release();
    for (int i = 0; i < threads; ++i) EXPECT_TRUE(app.receive().at("id").is_number());
    app.endInput();
    EXPECT_THAT(app.receiveRest(), IsEmpty());
    EXPECT_THAT(engine_.requests("/type"), IsEmpty());
}

TEST_F(UnderWay, ProgressCountsTheOwnersSecondsDown) {
    hold("/home");
    std::atomic<int> count = 0;
    engine_.answer("/status", [&](const HTTPRequest&) {
        const int now = ++count;
        if (now == 3) release();
        return HTTPResponse::json({{"asking", 42.5 - now}});
    });
    AppSide app(CallTimes{.betweenStatus = std::chrono::milliseconds(1)});
    app.send(callWithToken(1, "iphone_go_home", "token-1"));
    std::vector<Json> told;
    Json message = app.receive();
    for (; message.contains("method"); message = app.receive()) told.push_back(message);
    EXPECT_EQ(message.at("id"), 1);
    ASSERT_GE(told.size(), 2U);
    double last = -1;
    for (int left = 42; const Json& one : told) {
        EXPECT_EQ(one.at("method"), "notifications/progress");
        EXPECT_FALSE(one.contains("id"));
        const Json& progress = one.at("params");
        EXPECT_EQ(progress.at("progressToken"), "token-1");
        EXPECT_GT(progress.at("progress").get<double>(), last);
        last = progress.at("progress");
        EXPECT_GT(progress.at("total").get<double>(), last);
        EXPECT_THAT(progress.at("message").get<std::string>(),
                    testing::HasSubstr(std::to_string(left--) + " s left"));
    }
    app.endInput();
    EXPECT_THAT(app.receiveRest(), IsEmpty());
}

TEST_F(UnderWay, NothingIsToldUnlessTheAppAskedAndTheOwnerIsAsked) {
    const std::pair<Json, Json> tokensAndStatus[] = {
        {nullptr, {{"asking", 40}}}, {1.5, {{"asking", 40}}}, {"t", {{"paused", false}}}};
    for (const auto& [token, status] : tokensAndStatus) {
        SCOPED_TRACE(token);
        std::promise<void> polled;
        std::atomic<int> count = 0;
        engine_.answer("/status", [&](const HTTPRequest&) {
            if (++count == 3) polled.set_value();
            return HTTPResponse::json(status);
        });
        engine_.answer("/home", [&](const HTTPRequest&) {
            polled.get_future().wait();
            return HTTPResponse::json({{"ok", true}});
        });
        AppSide app(CallTimes{.betweenStatus = std::chrono::milliseconds(1)});
        app.send(callWithToken(1, "iphone_go_home", token));
        EXPECT_EQ(app.receive().value("id", Json()), 1);
    }
}

TEST_F(UnderWay, AnOwnerWhoDoesNotAnswerInTimeMeansNo) {
    holdUntilClosed("/home");
    engine_.answer("/status", Json{{"asking", 1.0}});
    AppSide app(CallTimes{.longest = std::chrono::seconds(2),
                          .betweenStatus = std::chrono::milliseconds(1)});
    EXPECT_EQ(
        app.refused("iphone_go_home"),
        "Not done: the owner didn't answer the payment request on their Mac within 2 seconds, "
        "so it counts as a no. Repeat the action only if the owner asks you to.");
    awaitClosed();
}

TEST_F(UnderWay, AnEngineThatDoesNotAnswerInTimeIsNotTheOwner) {
    holdUntilClosed("/home");
    AppSide app(CallTimes{.longest = std::chrono::milliseconds(200),
                          .betweenStatus = std::chrono::milliseconds(1)});
    EXPECT_THAT(app.refused("iphone_go_home"),
                testing::HasSubstr("look at the screen before you repeat it"));
    awaitClosed();
}

TEST_F(UnderWay, ACallWhoseTimeIsOverBeforeItsTurnIsNotSent) {
    AppSide app(CallTimes{.longest = Duration::zero()});
    EXPECT_THAT(app.refused("iphone_type", {{"text", "x"}}),
                testing::HasSubstr("Not done: too many other calls"));
    EXPECT_THAT(engine_.requests("/type"), IsEmpty());
}

TEST_F(UnderWay, WhatIsUnderWayAtTheEndOfInputIsClosedAndAnswered) {
    holdUntilClosed("/home");
    AppSide app;
    app.send(callRequest(1, "iphone_go_home"));
    engine_.await("/home");
    app.endInput();
    awaitClosed();
    const auto rest = app.receiveRest();
    ASSERT_EQ(rest.size(), 1U);
    EXPECT_EQ(rest[0].at("id"), 1);
    EXPECT_EQ(rest[0].at("result").at("isError"), true);
}

TEST_F(UnderWay, AnAppThatReadsNothingDoesNotKeepTheHelperAlive) {
    AppSide app;
    for (int i = 0; i < 100; ++i) app.send(request(i, "tools/list"));
    app.endInput();
    // The destructor waits for the helper to end, with far more to say than a pipe holds.
}

}  // namespace
}  // namespace tandrel
