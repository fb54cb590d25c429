#include "platform/virtual/virtual_phone.h"

#include <atomic>

#include <gmock/gmock.h>

#include "platform/virtual/virtual_support.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;
using View = VirtualPhone::View;

const std::string kTimedPages = R"([
  {"name": "home", "kind": "home", "items": [{"kind": "icons", "icons": [
    {"label": "Wait", "tap": {"go": "wait"}},
    {"label": "Unplug", "tap": {"trouble": "unplug", "seconds": 5}},
    {"label": "Vanish", "tap": {"trouble": "vanish"}}]}]},
  {"name": "wait", "items": [], "later": {"seconds": 2, "do": {"go": "done", "count": "waits"}}},
  {"name": "done", "items": []}
])";

// Takes frames and counts them.
struct Frames {
    FrameSink sink() {
        return [this](PixelBuffer frame) {
            latest = std::move(frame);
            ++count;
        };
    }
    std::atomic<int> count = 0;
    PixelBuffer latest;  // read on the phone's thread or after the watch ended
};

class VirtualPhoneTest : public testing::Test {
 protected:
    // Turns the clock and waits until the phone has done what was due then: what waits for a time
    // is put behind what the queue was given before it looked at the clock.
    void pass(Duration time) {
        clock_.advance(time);
        phone_.record();
        phone_.record();
    }
    void tap(const std::string& label) {
        const auto place = phone_.find(label);
        ASSERT_TRUE(place) << label;
        phone_.tap(*place);
    }

    ManualClock clock_;
    VirtualPhone phone_{test::scenario(kTimedPages), clock_};
};

TEST_F(VirtualPhoneTest, SameFrameComesAgainOnEveryTickWhileNothingChanges) {
    Frames frames;
    auto watching = phone_.watchFrames(View::cable, frames.sink());
    EXPECT_EQ(frames.count, 1);
    const auto first = phone_.frame();
    for (int tick = 2; tick <= 5; ++tick) {
        pass(34ms);
        EXPECT_EQ(frames.count, tick);
    }
    EXPECT_TRUE(frames.latest.sharesPixelsWith(first));
    watching.reset();
    pass(1s);
    EXPECT_EQ(frames.count, 5);
}

TEST_F(VirtualPhoneTest, TicksThatWereMissedAreNotMadeUpFor) {
    Frames frames;
    const auto watching = phone_.watchFrames(View::cable, frames.sink());
    pass(10s);
    pass(0ms);
    EXPECT_LE(frames.count, 3);
}

TEST_F(VirtualPhoneTest, VerbHasDeliveredItsFrameWhenItReturns) {
    Frames frames;
    const auto watching = phone_.watchFrames(View::cable, frames.sink());
    const auto before = phone_.frame();
    phone_.showPage("done");
    EXPECT_EQ(frames.count, 2);
    EXPECT_FALSE(phone_.frame().sharesPixelsWith(before));
    EXPECT_TRUE(frames.latest.sharesPixelsWith(phone_.frame()));
}

TEST_F(VirtualPhoneTest, CableBringsNothingWhileUnpluggedOrFrozenAndTheDisplayGoesOn) {
    Frames cable;
    Frames display;
    const auto watchingCable = phone_.watchFrames(View::cable, cable.sink());
    const auto watchingDisplay = phone_.watchFrames(View::display, display.sink());
    using Verb = void (VirtualPhone::*)();
    const std::pair<Verb, Verb> troubles[] = {{&VirtualPhone::unplug, &VirtualPhone::plug},
                                              {&VirtualPhone::vanish, &VirtualPhone::comeBack},
                                              {&VirtualPhone::freeze, &VirtualPhone::thaw}};
    for (const auto& [begin, end] : troubles) {
        (phone_.*begin)();
        const int before = cable.count;
        const int shown = display.count;
        pass(34ms);
        EXPECT_EQ(cable.count, before);
        EXPECT_GT(display.count, shown);
        (phone_.*end)();
        EXPECT_GT(cable.count, before);
    }
}

TEST_F(VirtualPhoneTest, BlackCableShowsNothingAndLightsUpAgain) {
    Frames cable;
    const auto watching = phone_.watchFrames(View::cable, cable.sink());
    phone_.goBlack();
    EXPECT_EQ(test::pixelAt(cable.latest, {0.5, 0.5}).brightest, 0);
    EXPECT_GT(test::pixelAt(phone_.frame(), {0.5, 0.5}).brightest, 40);
    phone_.lightUp();
    EXPECT_TRUE(cable.latest.sharesPixelsWith(phone_.frame()));
}

TEST_F(VirtualPhoneTest, PageDoesWhatItDoesLaterOnlyWhileItIsShown) {
    tap("Wait");
    pass(1s);
    phone_.showPage("wait");
    pass(1500ms);
    EXPECT_EQ(phone_.record().page, "wait") << "the first visit ended";
    pass(500ms);
    EXPECT_EQ(phone_.record().page, "done");
    EXPECT_EQ(phone_.record().counts.at("waits"), 1);
}

TEST_F(VirtualPhoneTest, TroubleOfATapEndsAfterItsTime) {
    tap("Unplug");
    EXPECT_EQ(phone_.links(), (PhoneLinks{.bluetooth = true, .mirroring = true}));
    pass(4900ms);
    EXPECT_FALSE(phone_.links().plugged);
    pass(100ms);
    EXPECT_TRUE(phone_.links().plugged);
    tap("Vanish");
    pass(1h);
    EXPECT_EQ(phone_.links(), PhoneLinks{});
}

TEST_F(VirtualPhoneTest, LinksAreToldAtOnceAndOnChangeOnly) {
    std::vector<PhoneLinks> told;
    auto watching = phone_.watchLinks([&told](PhoneLinks links) { told.push_back(links); });
    phone_.plug();
    phone_.disconnectBluetooth();
    phone_.disconnectBluetooth();
    watching.reset();
    phone_.connectBluetooth();
    EXPECT_THAT(told,
                testing::ElementsAre(PhoneLinks{true, true, true}, PhoneLinks{true, false, true}));
}

TEST_F(VirtualPhoneTest, RecordAndFrameCanBeAwaited) {
    EXPECT_FALSE(phone_.awaitRecord([](const auto& record) { return record.typed == "a"; }, 0.01));
    std::jthread typist([this] { phone_.receive({KeyEvent{0x04, 0}}); });
    EXPECT_TRUE(phone_.awaitRecord([](const auto& record) { return record.typed == "a"; }));
    EXPECT_TRUE(phone_.awaitFrame([](const PixelBuffer& frame) { return frame.width() == 402; }));
    phone_.unplug();
    EXPECT_FALSE(phone_.awaitFrame([](const PixelBuffer&) { return true; }, 0.01));
}

TEST_F(VirtualPhoneTest, TouchIsTimed) {
    phone_.touch(TouchPhase::down, {0.5, 0.6});
    clock_.advance(800ms);
    phone_.touch(TouchPhase::up, {0.5, 0.6});
    EXPECT_DOUBLE_EQ(phone_.record().touches.at(0).seconds, 0.8);
}

TEST(VirtualPhoneUnpaired, StaysAwayFromBluetooth) {
    ManualClock clock;
    VirtualPhone phone(test::scenario(kTimedPages, R"("paired": false)"), clock);
    phone.connectBluetooth();
    phone.vanish();
    phone.comeBack();
    EXPECT_EQ(phone.links(), (PhoneLinks{.plugged = true, .mirroring = true}));
}

// Many threads at once, for the sanitizers and for deadlocks.
TEST(VirtualPhoneThreads, EverythingAtOnce) {
    VirtualPhone phone(test::scenario(kTimedPages), systemClock());
    std::vector<std::jthread> threads;
    threads.emplace_back([&] {
        for (int i = 0; i < 200; ++i)
            phone.receive({PointerTo{{i / 200.0, 0.5}}, KeyEvent{0x04, 0}});
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 50; ++i) phone.showPage(i % 2 == 0 ? "home" : "wait");
    });
    threads.emplace_back([&] {
        for (int i = 0; i < 50; ++i) {
            const auto watching = phone.watchFrames(
                View::cable, [](const PixelBuffer& frame) { EXPECT_EQ(frame.width(), 402); });
            phone.unplug();
            phone.plug();
        }
    });
    threads.clear();
    EXPECT_EQ(phone.record().keys.size(), 200u);
}

}  // namespace
}  // namespace tandrel
