#include "screen/window_capture.h"

#include <gtest/gtest.h>

#include "image/pictures.h"
#include "screen/fake_windows.h"
#include "support/environment_variable.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;
using pictures::Colour;

class WindowCaptureTest : public testing::Test {
 protected:
    WindowCaptureTest() {
        windows.show(FakeWindows::receiver());
        capture.emplace(windows, FakeWindows::receiver(), clock, [this] { ++changes; });
    }
    void start() { ASSERT_TRUE(capture->start()); }
    bool draw(int grey) {
        const auto level = static_cast<std::uint8_t>(grey);
        return windows.draw(7, pictures::plain(96, 192, Colour{level, level, level}));
    }

    ManualClock clock;
    FakeWindows windows;
    int changes = 0;
    std::optional<WindowCapture> capture;
};

TEST_F(WindowCaptureTest, HoldsTheNewestFrameAndItsAge) {
    EXPECT_FALSE(capture->isRunning());
    start();
    EXPECT_TRUE(capture->isRunning());
    EXPECT_FALSE(capture->latest());
    draw(10);
    clock.advance(2s);
    draw(60);
    clock.advance(3s);
    EXPECT_EQ(capture->latest()->frame.pixels()[0], 60);
    EXPECT_DOUBLE_EQ(capture->latest()->ageSeconds, 3);
    EXPECT_EQ(capture->frames(), 2U);
    EXPECT_EQ(changes, 1) << "told when the picture came, not with each frame";
}

TEST_F(WindowCaptureTest, AClosedWindowEndsItAndDoesNotStartAgain) {
    start();
    draw(10);
    windows.close(7);
    EXPECT_FALSE(capture->isRunning());
    EXPECT_FALSE(capture->latest());
    EXPECT_EQ(capture->trouble(), "window 7 is gone");
    EXPECT_EQ(changes, 2);
    WindowCapture again(windows, FakeWindows::receiver(), clock);
    EXPECT_EQ(again.start().error().message, "window 7 is gone");
    EXPECT_FALSE(again.isRunning());
}

TEST_F(WindowCaptureTest, AHiddenWindowHasNoPictureUntilItIsBack) {
    start();
    draw(10);
    draw(10);
    windows.hide(7, "minimised");
    EXPECT_TRUE(capture->isRunning());
    EXPECT_FALSE(capture->latest());
    EXPECT_EQ(capture->awaitLatest(1h, {}).error().message, "minimised");
    draw(10);
    EXPECT_TRUE(capture->latest());
    EXPECT_EQ(capture->trouble(), std::nullopt);
    EXPECT_EQ(capture->appearances(), 2);
}

TEST_F(WindowCaptureTest, AListenerGetsTheNewestFrameAndEachLaterOneUntilTheStop) {
    start();
    draw(10);
    std::vector<int> seen;
    capture->setListener([&](const PixelBuffer& frame) { seen.push_back(frame.pixels()[0]); });
    draw(20);
    capture->setListener({});
    draw(30);
    EXPECT_EQ(seen, (std::vector<int>{10, 20}));
    capture->stop();
    EXPECT_FALSE(draw(40));
    EXPECT_FALSE(capture->isRunning());
    EXPECT_FALSE(capture->latest());
}

TEST_F(WindowCaptureTest, WaitsForTheFirstFrameAndSaysThatNoneCame) {
    start();
    std::jthread later([this] {
        while (!draw(10)) std::this_thread::yield();
    });
    EXPECT_TRUE(capture->awaitLatest(1h, {}));
    later.join();
    WindowCapture other(windows, FakeWindows::receiver(), clock);
    ASSERT_TRUE(other.start());
    EXPECT_EQ(other.awaitLatest(0s, {}).error().message, "no frame yet from the AirPlay window");
}

TEST_F(WindowCaptureTest, ThePhoneIsCutOutOfItsWindow) {
    start();
    const PixelBuffer window = pictures::phoneInAWindow();
    const PixelBuffer phone = capture->phoneScreen(window);
    EXPECT_EQ((Size{phone.width(), phone.height()}), (Size{603, 1311}));
    EXPECT_EQ(phone.pixels(), window.row(40) + 4 * 90);
}

TEST_F(WindowCaptureTest, ABareWindowIsThePhonesScreenWhateverItShows) {
    WinInfo bare = FakeWindows::receiver();
    bare.isBare = true;
    WindowCapture whole(windows, bare, clock);
    const PixelBuffer dark = pictures::plain(200, 100, pictures::kBlack);
    EXPECT_EQ(whole.content(dark).rect, (PixelRect{0, 0, 200, 100}));
    EXPECT_EQ(whole.content(dark).orientation, "landscape");
}

TEST_F(WindowCaptureTest, TheOwnersShapeIsTriedFirst) {
    const EnvironmentVariable shape("TANDREL_SCREEN_ASPECT", "1/2");
    WindowCapture shaped(windows, FakeWindows::receiver(), clock);
    const ContentRect found = shaped.content(pictures::plain(300, 400, pictures::kBlack));
    EXPECT_EQ(found.rect, (PixelRect{50, 0, 200, 400}));
}

}  // namespace
}  // namespace tandrel
