#include "app/owner_side.h"

#include <gtest/gtest.h>

#include "app/phone_test_run.h"
#include "app/running_program.h"
#include "engine/running_engine.h"

namespace tandrel {
namespace {

// The owner's side on a whole engine with a virtual phone; the test's thread is the main thread.
class OwnerSideTest : public testing::Test {
 protected:
    OwnerSideTest() {
        owner_.emplace(engine_.wiring(), builtApp(), engine_.loop(), systemClock());
        owner_->start();
    }
    // Runs the main thread until `done` is called, and returns what it was told.
    OwnerActions::Outcome outcomeOf(const std::function<void(OwnerActions::Done)>& deed) {
        std::optional<OwnerActions::Outcome> outcome;
        deed([&](const OwnerActions::Outcome& told) {
            outcome = told;
            engine_.loop().quit(0);
        });
        run([&] { return outcome.has_value(); });
        return outcome.value_or(OwnerActions::Outcome{false, "never done"});
    }
    void await(const std::function<bool(const AppSnapshot&)>& fits) {
        bool seen = false;
        const auto listener = owner_->state().listen([&](const AppSnapshot& now) {
            if (!fits(now)) return;
            seen = true;
            engine_.loop().quit(0);
        });
        run([&] { return seen; });
        EXPECT_TRUE(seen);
    }
    void run(const std::function<bool()>& isOver) {
        bool late = false;
        const auto patience = engine_.loop().after(std::chrono::seconds(60), [&] {
            late = true;
            engine_.loop().quit(1);
        });
        while (!isOver() && !late) engine_.loop().run();
    }
    OwnerActions& actions() { return owner_->actions(); }

    RunningEngine engine_;
    std::optional<OwnerSide> owner_;
};

TEST_F(OwnerSideTest, WhatTheOwnerSwitchesHoldsForTheEngineAndShowsAtOnce) {
    engine_.awaitMatched();
    await([](const AppSnapshot& now) { return now.isHealthy() && !now.inputs.paused; });
    EXPECT_EQ(outcomeOf([&](auto done) { actions().setPaused(true, done); }),
              (OwnerActions::Outcome{true, ""}));
    await([](const AppSnapshot& now) { return health(now.inputs) == Health::paused; });
    EXPECT_EQ(engine_.post("/home", Json::object()).status, 423);
    EXPECT_TRUE(outcomeOf([&](auto done) { actions().fix(Fix::resume, done); }).ok);
    EXPECT_EQ(engine_.post("/home", Json::object()).status, 200);

    EXPECT_TRUE(outcomeOf([&](auto done) { actions().setAskBeforePayments(false, done); }).ok);
    EXPECT_EQ(engine_.get("/status").json()["paymentGuard"], false);
    EXPECT_TRUE(outcomeOf([&](auto done) { actions().setAskWhenUnsure(false, done); }).ok);
    EXPECT_TRUE(outcomeOf([&](auto done) { actions().setLink(LinkChoice::airplay, done); }).ok);
    EXPECT_TRUE(outcomeOf([&](auto done) { actions().setSetupDone(true, done); }).ok);
    await([](const AppSnapshot& now) {
        return !now.askBeforePayments && !now.askWhenUnsure && now.inputs.setupDone &&
               now.inputs.linkChoice == LinkChoice::airplay;
    });
}

TEST_F(OwnerSideTest, FixesDoWhatTheySay) {
    engine_.awaitMatched();
    EXPECT_TRUE(outcomeOf([&](auto done) { actions().fix(Fix::matchAgain, done); }).ok);
    EXPECT_TRUE(outcomeOf([&](auto done) { actions().fix(Fix::approveHelper, done); }).ok);
    EXPECT_TRUE(outcomeOf([&](auto done) { actions().fix(Fix::reconnect, done); }).ok);
    engine_.awaitPhones();
    EXPECT_EQ(outcomeOf([&](auto done) { actions().addTo(AIApp::codex, done); }),
              (OwnerActions::Outcome{true, "Added. Start a new Codex session to use it."}));
    EXPECT_TRUE(std::filesystem::exists(engine_.home() / ".codex/config.toml"));
    await([](const AppSnapshot& now) { return now.aiApps.at(2).link == Link::addedHere; });
}

// Other engines that a test has made up: real ones belong to whoever started them.
class MadeUpApplications final : public RunningApplications {
 public:
    std::vector<RunningApplication> others() override { return running; }
    bool terminate(const RunningApplication& application) override {
        if (application.name == "Tandrel") return false;
        return std::erase_if(running, [&](const auto& one) { return one.pid == application.pid; });
    }
    bool forceTerminate(const RunningApplication& application) override {
        forced.push_back(application.pid);
        return true;
    }
    std::vector<RunningApplication> running;
    std::vector<int> forced;
};

TEST_F(OwnerSideTest, QuittingOthersNamesThemAndStartsAfresh) {
    MadeUpApplications others;
    int reopened = 0;
    OwnerServices& services = owner_->services();
    OwnerActions quitting({.state = owner_->state(),
                           .engine = engine_.wiring().engine(),
                           .defaults = services.defaults(),
                           .ai = services.ai(),
                           .running = others,
                           .processes = services.processes(),
                           .loop = engine_.loop(),
                           .clock = systemClock(),
                           .reopen = [&] { ++reopened; },
                           .moveToApplications = [] { return std::nullopt; }});
    const auto quit = [&] {
        return outcomeOf([&](auto done) { quitting.fix(Fix::quitOthers, done); });
    };
    EXPECT_EQ(quit(), (OwnerActions::Outcome{false, "Nothing to quit."}));
    EXPECT_EQ(reopened, 0);
    others.running = {{1, "Tandrel Mirror", "com.mossgate.tandrel-mirror"},
                      {2, "Editor", "org.example.editor"},
                      {3, "PocketLink", "ai.far-reach.pocketlink"},
                      {4, "Tandrel", "com.mossgate.tandrel"}};  // refuses, so it is forced
    EXPECT_EQ(quit(), (OwnerActions::Outcome{
                          true, "Quit Tandrel Mirror, PocketLink, Tandrel. Reopening Tandrel…"}));
    EXPECT_EQ(reopened, 1);
    EXPECT_EQ(others.running.size(), 2U) << "the editor, and the one that had to be forced";
    EXPECT_EQ(others.forced, std::vector<int>{4});
}

TEST_F(OwnerSideTest, TheWindowsTestReportsOnTheMainThreadAndToTheModel) {
    engine_.awaitMatched();
    engine_.phone().lock();
    const EnginePlace place = owner_->enginePlace();
    std::vector<PhoneTest::Progress> seen;
    PhoneTestRun test(owner_->state(), place, engine_.loop(), systemClock(),
                      [&](const PhoneTest::Progress& now) {
                          seen.push_back(now);
                          if (!now.running) engine_.loop().quit(0);
                      });
    test.start();
    EXPECT_TRUE(test.running());
    run([&] { return !test.running(); });
    EXPECT_EQ(test.progress().message, "Nothing was done on the iPhone.");
    EXPECT_EQ(seen.at(1).lines.at(0).mark, PhoneTest::Mark::running);
    await([](const AppSnapshot& now) {
        return now.testPassed == false && now.inputs.screenState == PhoneScreen::locked;
    });
}

TEST_F(OwnerSideTest, EndsInTheMiddleOfATest) {
    engine_.awaitMatched();
    {
        PhoneTestRun test(owner_->state(), owner_->enginePlace(), engine_.loop(), systemClock(),
                          [](const auto&) {});
        test.start();
    }
    actions().fix(Fix::matchAgain);
    owner_.reset();
}

}  // namespace
}  // namespace tandrel
