#include "hid/input.h"

#include <functional>
#include <limits>
#include <map>
#include <thread>

#include "hid/hid_fixture.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

using Lines = std::vector<std::string>;

// Time that a paced action turns by its own pauses. Before each pause what was sent so far reaches
// the fake Bluetooth system, so that a report's stamp is the moment at which it was sent.
class PacedClock final : public ManualClock {
 public:
    PacedClock() : ManualClock(Sleep::passes) {}
    std::function<void()> beforeSleep = [] {};

    bool sleepUntil(TimePoint deadline, std::stop_token stop) override {
        beforeSleep();
        return ManualClock::sleepUntil(deadline, std::move(stop));
    }
};

// The phone "A" listens. A transcript line is "<milliseconds> A <report>: <bytes>".
class InputTest : private ClockFirst<PacedClock>, public HidFixture {
 protected:
    InputTest() : HidFixture(clock), input(hid, FakeBluetooth::phone("A"), clock) {}

    void SetUp() override {
        begin();
        connect("A");
        clock.beforeSleep = [this] { hid.state(); };
        bluetooth.stamp = [this] { return std::to_string(elapsedMilliseconds()) + " "; };
    }

    long elapsedMilliseconds() const {
        return std::chrono::round<std::chrono::milliseconds>(clock.now() - start_).count();
    }

    // What the action made of the reports, from its beginning to the time at which it returned.
    std::vector<std::string> timed(const std::function<Result<void>()>& action) {
        bluetooth.clearTranscript();
        start_ = clock.now();
        const Result<void> result = action();
        std::vector<std::string> lines = sent();
        lines.push_back(result ? std::to_string(elapsedMilliseconds()) : result.error().message);
        return lines;
    }

    using ClockFirst<PacedClock>::clock;
    Input input;

 private:
    TimePoint start_ = clock.now();
};

TEST_F(InputTest, ActionsSendTheirReportsAtTheirPace) {
    const std::pair<std::function<Result<void>()>, Lines> rows[] = {
        {[&] { return input.tap({0.5, 0.5}); },
         {"0 A 2: 00 00 40 00 40", "60 A 3: 01 00 00 00", "140 A 3: 00 00 00 00", "170"}},
        {[&] { return input.tap({0, 1}, 1.5); },
         {"0 A 2: 00 00 00 ff 7f", "60 A 3: 01 00 00 00", "1560 A 3: 00 00 00 00", "1590"}},
        {[&] { return input.move({1, 0}); }, {"0 A 2: 00 ff 7f 00 00", "30"}},
        {[&] { return input.swipe({0, 0}, {1, 1}, 0); },  // still drags over two points
         {"0 A 2: 00 00 00 00 00", "60 A 3: 01 00 00 00", "90 A 2: 01 00 40 00 40",
          "90 A 2: 01 ff 7f ff 7f", "90 A 3: 00 00 00 00", "120"}},
        {[&] { return input.swipe({0, 0.5}, {1, 0.5}, 0.3); },
         {"0 A 2: 00 00 00 00 40", "60 A 3: 01 00 00 00", "90 A 2: 01 cd 0c 00 40",
          "120 A 2: 01 99 19 00 40", "150 A 2: 01 66 26 00 40", "180 A 2: 01 33 33 00 40",
          "210 A 2: 01 00 40 00 40", "240 A 2: 01 cc 4c 00 40", "270 A 2: 01 99 59 00 40",
          "300 A 2: 01 66 66 00 40", "330 A 2: 01 32 73 00 40", "360 A 2: 01 ff 7f 00 40",
          "390 A 3: 00 00 00 00", "420"}},
        {[&] { return input.nudge(300, 0, Input::Click::no); },
         {"0 A 3: 00 7f 00 00", "30 A 3: 00 7f 00 00", "60 A 3: 00 2e 00 00", "90"}},
        {[&] { return input.nudge(-200, 5, Input::Click::yes); },
         {"0 A 3: 00 81 05 00", "30 A 3: 00 b7 00 00", "60 A 3: 01 00 00 00",
          "140 A 3: 00 00 00 00", "170"}},
        {[&] { return input.nudge(0, 0, Input::Click::no); }, {"0"}},
        {[&] { return input.type("Hi!"); },  // as a keyboard sends shifted ones
         {"0 A 1: 02 00 00 00 00 00 00 00", "30 A 1: 02 00 0b 00 00 00 00 00",
          "60 A 1: 02 00 00 00 00 00 00 00", "90 A 1: 00 00 00 00 00 00 00 00",
          "120 A 1: 00 00 0c 00 00 00 00 00", "150 A 1: 00 00 00 00 00 00 00 00",
          "180 A 1: 02 00 00 00 00 00 00 00", "210 A 1: 02 00 1e 00 00 00 00 00",
          "240 A 1: 02 00 00 00 00 00 00 00", "270 A 1: 00 00 00 00 00 00 00 00", "300"}},
        {[&] { return input.key("Return", {"Cmd"}); },
         {"0 A 1: 08 00 00 00 00 00 00 00", "30 A 1: 08 00 28 00 00 00 00 00",
          "60 A 1: 08 00 00 00 00 00 00 00", "90 A 1: 00 00 00 00 00 00 00 00", "120"}},
        {[&] { return input.key("A", {}); },  // without its Shift
         {"0 A 1: 00 00 04 00 00 00 00 00", "30 A 1: 00 00 00 00 00 00 00 00", "60"}},
        {[&] { return input.key("a", {"SHIFT", "ctrl", "option", "shift"}); },
         {"0 A 1: 07 00 00 00 00 00 00 00", "30 A 1: 07 00 04 00 00 00 00 00",
          "60 A 1: 07 00 00 00 00 00 00 00", "90 A 1: 00 00 00 00 00 00 00 00", "120"}},
        {[&] { return input.consumer(0x223); }, {"0 A 4: 23 02", "80 A 4: 00 00", "110"}},
    };
    for (const auto& [action, lines] : rows) EXPECT_EQ(timed(action), lines);
}

TEST_F(InputTest, StepPacesEveryAction) {
    input.setStep(0.01);
    EXPECT_EQ(
        timed([&] { return input.tap({0, 0}); }),
        (Lines{"0 A 2: 00 00 00 00 00", "20 A 3: 01 00 00 00", "100 A 3: 00 00 00 00", "110"}));
    input.setStep(0);
    EXPECT_EQ(input.step(), 0.001);
    input.setStep(std::numeric_limits<double>::quiet_NaN());
    EXPECT_EQ(input.step(), 0.001);
    input.setStep(7);
    EXPECT_EQ(input.step(), 1);
}

TEST_F(InputTest, RefusesWhatItCannotDoAndSendsNothing) {
    constexpr double kNan = std::numeric_limits<double>::quiet_NaN();
    constexpr double kInfinity = std::numeric_limits<double>::infinity();
    constexpr auto kLeast = std::numeric_limits<int>::min();
    const char* const kHold = "hold must be between 0 and 60 seconds";
    const char* const kDuration = "duration must be between 0 and 60 seconds";
    const char* const kDistance = "dx and dy must be between -20000 and 20000";
    const std::tuple<const char*, std::function<Result<void>()>, std::string> rows[] = {
        {"accent", [&] { return input.type("café"); }, "cannot type \"é\" with a US keyboard"},
        {"first of two", [&] { return input.type("€ and £"); },
         "cannot type \"€\" with a US keyboard"},
        {"line end of two characters", [&] { return input.type("a\r\n"); },
         "cannot type \"\\r\\n\" with a US keyboard"},
        {"not UTF-8", [&] { return input.type("a\xFF"); },
         "cannot type \"\uFFFD\" with a US keyboard"},
        {"long text", [&] { return input.type(std::string(10'001, 'a')); },
         "text is too long: at most 10000 characters can be typed at once"},
        {"unknown key", [&] { return input.key("F13", {}); }, "unknown key F13"},
        {"key of two characters", [&] { return input.key("ab", {"hyper"}); }, "unknown key ab"},
        {"endless key", [&] { return input.key(std::string(5'000, 'k'), {}); },
         "unknown key " + std::string(200, 'k')},
        {"unknown modifier", [&] { return input.key("a", {"cmd", "hyper", "nor"}); },
         "unknown key hyper"},
        {"long hold", [&] { return input.tap({0, 0}, 60.001); }, kHold},
        {"negative hold", [&] { return input.tap({0, 0}, -0.1); }, kHold},
        {"hold that is no number", [&] { return input.tap({0, 0}, kNan); }, kHold},
        {"endless swipe", [&] { return input.swipe({0, 0}, {1, 1}, kInfinity); }, kDuration},
        {"swipe that is no number", [&] { return input.swipe({0, 0}, {1, 1}, kNan); }, kDuration},
        {"far nudge", [&] { return input.nudge(20'001, 0, Input::Click::yes); }, kDistance},
        {"farthest nudge", [&] { return input.nudge(0, kLeast, Input::Click::yes); }, kDistance},
    };
    for (const auto& [name, action, message] : rows)
        EXPECT_THAT(timed(action), testing::ElementsAre(message)) << name;
}

TEST_F(InputTest, DoesTheLongestThatIsAllowed) {
    EXPECT_EQ(timed([&] { return input.type(std::string(10'000, 'a')); }).back(), "600000");
    EXPECT_EQ(timed([&] { return input.nudge(-20'000, 20'000, Input::Click::no); }).back(), "4740");
    EXPECT_EQ(timed([&] { return input.tap({0, 0}, 60); }).back(), "60090");
}

TEST_F(InputTest, KnowsWhereItLeftThePointer) {
    EXPECT_EQ(input.pointer(), std::nullopt);
    input.move({0.25, 1.5});
    EXPECT_EQ(input.pointer(), (ScreenPoint{0.25, 1}));
    input.tap({0.1, 0.2});
    EXPECT_EQ(input.pointer(), (ScreenPoint{0.1, 0.2}));
    input.swipe({0.1, 0.2}, {0.3, 0.4}, 0.1);
    EXPECT_EQ(input.pointer(), (ScreenPoint{0.3, 0.4}));
    input.type("text");
    input.nudge(0, 0, Input::Click::yes);
    EXPECT_EQ(input.pointer(), (ScreenPoint{0.3, 0.4}));
    input.nudge(0, 1, Input::Click::no);
    EXPECT_EQ(input.pointer(), std::nullopt);
}

TEST_F(InputTest, DoesNotKnowThePointerOfAPhoneThatMissedAMoveOrARestart) {
    input.move({0.5, 0.5});
    disconnect("A");
    EXPECT_EQ(input.pointer(), std::nullopt);
    input.move({0.25, 0.25});
    connect("A");
    EXPECT_EQ(input.pointer(), std::nullopt);
    input.move({0.75, 0.75});
    EXPECT_EQ(input.pointer(), (ScreenPoint{0.75, 0.75}));
    bluetooth.unsubscribe("A", "3");
    EXPECT_EQ(input.pointer(), std::nullopt);
    bluetooth.subscribe("A", "3");
    input.move({0.5, 0.5});
    hid.restart();
    hid.state();
    bluetooth.powerOn();
    connect("A");
    EXPECT_EQ(input.pointer(), std::nullopt);
}

TEST_F(InputTest, ReachesNoOtherPhone) {
    connect("B");
    Input other(hid, FakeBluetooth::phone("B"), clock);
    input.consumer(0x223);
    other.consumer(0xE9);
    EXPECT_EQ(sent(), (Lines{"0 A 4: 23 02", "80 A 4: 00 00", "110 B 4: e9 00", "190 B 4: 00 00"}));
}

TEST_F(InputTest, TwoCallersDoNotInterleave) {
    std::thread letters([&] { EXPECT_TRUE(input.type("aa")); });
    EXPECT_TRUE(input.type("11"));
    letters.join();
    Lines pressed;
    for (const std::string& line : sent()) {
        const std::string usage = line.substr(line.find(':') + 8, 2);
        if (usage != "00") pressed.push_back(usage);
    }
    EXPECT_THAT(pressed, testing::AnyOf(testing::ElementsAre("04", "04", "1e", "1e"),
                                        testing::ElementsAre("1e", "1e", "04", "04")));
}

TEST_F(InputTest, NothingIsMixedUpOrLeftPressedAmidRefusalsRestartsAndAStop) {
    connect("B");
    bluetooth.stamp = [] { return std::string(); };
    Input other(hid, FakeBluetooth::phone("B"), clock);
    std::thread letters([&] {
        while (input.type("aA")) continue;
    });
    std::thread digits([&] {
        while (other.type("1!")) continue;
    });
    for (int round = 0; round < 20; ++round) {
        bluetooth.refuseNextUpdates(round);
        disconnect("A");
        bluetooth.becomeReady();
        if (round % 5 == 4) {
            hid.restart();
            hid.state();
            bluetooth.powerOn();
            subscribeAll("B");
        }
        subscribeAll("A");
    }
    input.stop();
    other.stop();
    letters.join();
    digits.join();
    const Lines lines = sent();
    hid.stop();
    std::map<std::string, std::string> last;
    for (const std::string& line : lines) {
        const std::string report = line.substr(0, 3);
        last[report] = line;
        EXPECT_TRUE(line.find(report == "A 1" ? " 1e " : " 04 ") == std::string::npos) << line;
    }
    for (const char* report : {"A 1", "B 1"}) {
        EXPECT_EQ(last[report], std::string(report) + ": 00 00 00 00 00 00 00 00");
    }
}

// Time stands still until the test turns it.
class StopTest : private ClockFirst<ManualClock>, public HidFixture {
 protected:
    StopTest() : HidFixture(clock), input(hid, FakeBluetooth::phone("A"), clock) {}

    void SetUp() override {
        begin();
        connect("A");
    }

    // Begins the action and stops the input once so many of its reports were sent.
    Result<void> stopAfter(int reports, const std::function<Result<void>(Input&)>& action) {
        Input stopped(hid, FakeBluetooth::phone("A"), clock);
        Result<void> result;
        std::thread caller([&] { result = action(stopped); });
        for (int sent = 1; sent < reports; ++sent) {
            bluetooth.awaitAccepted(accepted_ + sent);
            clock.awaitSleepers(1);
            clock.advance(std::chrono::seconds(1));
        }
        bluetooth.awaitAccepted(accepted_ + reports);
        stopped.stop();
        caller.join();
        return result;
    }

    int accepted_ = 4;  // on connecting
    const Result<void> stopping = fail("Tandrel is stopping.", 503);
    using ClockFirst<ManualClock>::clock;
    Input input;
};

TEST_F(StopTest, LiftsWhatIsPressedAndNothingElse) {
    const std::tuple<std::function<Result<void>(Input&)>, Result<void>, Lines> rows[] = {
        {[](Input& to) { return to.tap({0, 0}, 30); },
         stopping,
         {"A 2: 00 00 00 00 00", "A 3: 01 00 00 00", "A 3: 00 00 00 00"}},
        {[](Input& to) { return to.key("a", {"cmd"}); },
         stopping,
         {"A 1: 08 00 00 00 00 00 00 00", "A 1: 08 00 04 00 00 00 00 00",
          "A 1: 00 00 00 00 00 00 00 00"}},
        {[](Input& to) { return to.type("ab"); },
         stopping,
         {"A 1: 00 00 04 00 00 00 00 00", "A 1: 00 00 00 00 00 00 00 00"}},
        {[](Input& to) { return to.consumer(0x223); }, {}, {"A 4: 23 02", "A 4: 00 00"}},
    };
    for (const auto& [action, result, lines] : rows) {
        EXPECT_EQ(stopAfter(2, action), result);
        EXPECT_EQ(sent(), lines);
        accepted_ += static_cast<int>(lines.size());
        bluetooth.clearTranscript();
    }
}

TEST_F(StopTest, PhonesDoNotWaitForOneAnother) {
    Input other(hid, FakeBluetooth::phone("B"), clock);
    std::thread first([&] { EXPECT_TRUE(input.move({0, 0})); });
    std::thread second([&] { EXPECT_TRUE(other.move({0, 0})); });
    clock.awaitSleepers(2);
    input.stop();
    other.stop();
    first.join();
    second.join();
}

TEST_F(StopTest, LaterActionsFail) {
    input.stop();
    EXPECT_EQ(input.tap({0, 0}), stopping);
    EXPECT_EQ(input.type("é"), (fail("cannot type \"é\" with a US keyboard")));
    EXPECT_EQ(sent(), Lines{});
}

}  // namespace
}  // namespace tandrel
