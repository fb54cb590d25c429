#include <atomic>
#include <list>
#include <thread>
#include <vector>

#include <gtest/gtest.h>

#include "engine/running_engine.h"
#include "screen/fake_windows.h"
#include "support/environment_variable.h"
#include "support/eventually.h"
#include "support/manual_clock.h"

// What the engine does at its start and from then on at fixed times, with time turned by hand.
namespace tandrel {
namespace {

using Kind = EngineMode::Kind;
using namespace std::chrono_literals;

// Keeps timers until the test runs them.
class HandLoop final : public MainLoop {
 public:
    void post(Task) override {}
    std::unique_ptr<Timer> after(Duration delay, Task task) override {
        return std::make_unique<HandTimer>(timers_, Entry{delay, false, std::move(task)});
    }
    std::unique_ptr<Timer> every(Duration interval, Task task) override {
        return std::make_unique<HandTimer>(timers_, Entry{interval, true, std::move(task)});
    }
    int run() override { return 0; }
    void quit(int) override {}

    // Runs the tasks of the timers with that time, once each; says how many there were.
    int fire(Duration time, bool repeats) {
        std::vector<Task> due;
        for (const Entry& timer : timers_) {
            if (timer.time == time && timer.repeats == repeats) due.push_back(timer.task);
        }
        for (const Task& task : due) task();
        return static_cast<int>(due.size());
    }

 private:
    struct Entry {
        Duration time;
        bool repeats;
        Task task;
    };
    struct HandTimer final : Timer {
        HandTimer(std::list<Entry>& all, Entry entry)
            : timers(all), place(all.insert(all.end(), std::move(entry))) {}
        ~HandTimer() override { timers.erase(place); }
        std::list<Entry>& timers;
        const std::list<Entry>::iterator place;
    };

    std::list<Entry> timers_;
};

class CountedReceiver final : public AirPlayReceiver {
 public:
    void start() override { ++starts; }
    void stop() override { ++stops; }
    ReceiverStatus status() override { return {}; }
    std::optional<bool> isOn() override { return std::nullopt; }
    std::atomic<int> starts = 0;
    std::atomic<int> stops = 0;
};

class OnlyScreenRecording final : public Permissions {
 public:
    Permission bluetooth() override { return Permission::denied; }
    Permission camera() override { return Permission::denied; }
    Permission screenRecording() override { return recording; }
    std::atomic<Permission> recording = Permission::granted;
};

class EngineStart : public testing::Test {
 protected:
    // An engine that is not started yet, for these ports.
    Engine& make(std::uint16_t port = 0, std::uint16_t airplayPort = 0) {
        const EnvironmentVariable home("HOME", folder.path().string());
        const EnvironmentVariable phones("TANDREL_VIRTUAL_PHONE", "1");
        const EnvironmentVariable first("TANDREL_ENGINE_PORT", std::to_string(port));
        const EnvironmentVariable second("TANDREL_AIRPLAY_PORT", std::to_string(airplayPort));
        const AppInfo info = AppInfo::load(TANDREL_SOURCE_DIR);
        auto backends = Backends::open(info, systemClock());
        EXPECT_TRUE(backends);
        backends->windows = &windows;
        backends->permissions = &permissions;
        auto counted = std::make_unique<CountedReceiver>();
        receiver = counted.get();
        backends->receiver = std::move(counted);
        wiring = std::make_unique<Wiring>(std::move(*backends), info, loop, nobody_, clock);
        return wiring->engine();
    }
    void choose(const char* link) { ASSERT_TRUE(wiring->defaults().set("link", link)); }
    bool look() { return loop.fire(1500ms, true) == 1; }

    TemporaryFolder folder;
    ManualClock clock;
    HandLoop loop;
    FakeWindows windows;
    OnlyScreenRecording permissions;
    CountedReceiver* receiver = nullptr;
    std::unique_ptr<Wiring> wiring;

 private:
    NobodyAsker nobody_{systemClock()};
};

TEST_F(EngineStart, TheWatchdogKeepsThePictureAsLongAsAirplayIsChosen) {
    make().start();
    ASSERT_TRUE(look());
    choose("airplay");
    ASSERT_TRUE(look());
    EXPECT_TRUE(eventually([&] { return receiver->starts == 1; }))
        << "no window, so the own receiver";
    windows.show(FakeWindows::receiver());
    EXPECT_TRUE(eventually([&] { return look() && windows.opened() == 1; }));
    EXPECT_TRUE(windows.close(7));
    windows.show(FakeWindows::receiver(8));
    EXPECT_TRUE(eventually([&] { return look() && windows.opened() == 2; })) << "the next window";
    choose("cable");
    ASSERT_TRUE(look());
    EXPECT_TRUE(eventually([&] { return receiver->stops == 1; }));
    EXPECT_FALSE(windows.draw(8, {})) << "nothing captures it any more";
}

TEST_F(EngineStart, TheWatchdogLooksAtNothingThatItMayNotRecord) {
    permissions.recording = Permission::denied;
    Engine& engine = make();
    choose("airplay");
    windows.show(FakeWindows::receiver());
    engine.start();
    ASSERT_TRUE(look());
    engine.stop();
    EXPECT_EQ(windows.opened(), 0);
    EXPECT_EQ(receiver->starts, 0);
}

TEST_F(EngineStart, ReconnectingStartsAFreshCaptureAndMatchesFourSecondsLater) {
    Engine& engine = make();
    choose("airplay");
    windows.show(FakeWindows::receiver());
    engine.start();
    ASSERT_TRUE(eventually([&] { return windows.opened() == 1; }));
    EXPECT_EQ(loop.fire(4s, false), 0);
    engine.reconnect();
    EXPECT_FALSE(windows.draw(7, {}));
    EXPECT_EQ(loop.fire(4s, false), 1);
    EXPECT_TRUE(eventually([&] { return look() && windows.opened() == 2; }));
}

// An earlier copy of this program on a port.
class EarlierCopy : public EngineStart {
 protected:
    EarlierCopy() { EXPECT_TRUE(earlier.start()); }
    // The engine asked so often, and waits before it asks again.
    void awaitAsked(int count) {
        EXPECT_TRUE(eventually([&] { return asked == count; }));
        clock.awaitSleepers(1);
    }

    std::atomic<int> asked = 0;
    HTTPServer earlier{0, [this](const HTTPRequest& request) {
                           ++asked;
                           EXPECT_EQ(request.path, "/status");
                           return HTTPResponse::json({{"app", "Tandrel"}});
                       }};
};

TEST_F(EarlierCopy, ThatGoesLeavesItsPort) {
    Engine& engine = make(earlier.port());
    std::jthread starting([&] { engine.start(); });
    awaitAsked(1);
    clock.advance(500ms);
    awaitAsked(2);
    earlier.stop();
    clock.advance(500ms);
    starting.join();
    EXPECT_EQ(engine.mode().kind, Kind::own) << engine.mode().detail;
    const EngineMode before = engine.mode();
    engine.start();
    EXPECT_EQ(engine.mode(), before) << "it starts once";
}

TEST_F(EarlierCopy, ThatStaysIsUsedAfterThreeSeconds) {
    Engine& engine = make(earlier.port());
    const TimePoint start = clock.now();
    std::jthread starting([&] { engine.start(); });
    for (int i = 1; i <= 6; ++i) {
        awaitAsked(i);
        clock.advance(500ms);
    }
    starting.join();
    EXPECT_EQ(asked, 7);
    EXPECT_EQ(engine.mode(), (EngineMode{Kind::external, "Tandrel"}));
    EXPECT_EQ(clock.now() - start, 3s);
    engine.reconnect();
    EXPECT_EQ(loop.fire(4s, false), 0) << "what is another's is not reconnected";
}

TEST_F(EngineStart, WhoElseAnswersIsNotWaitedFor) {
    HTTPServer other(
        0, [](const HTTPRequest&) { return HTTPResponse::json({{"app", "tandrel-mirror"}}); });
    ASSERT_TRUE(other.start());
    Engine& engine = make(other.port(), other.port());
    engine.start();
    const EngineMode expected{Kind::external, "Tandrel Mirror"};
    EXPECT_EQ(engine.mode(), expected);
    EXPECT_EQ(engine.airplayMode(), expected);
    EXPECT_EQ(loop.fire(1500ms, true), 0) << "its picture is its own affair";
}

}  // namespace
}  // namespace tandrel
