#include "screen/screen.h"

#include <algorithm>
#include <atomic>
#include <thread>

#include <gtest/gtest.h>

#include "image/image_reader.h"
#include "image/pictures.h"
#include "screen/fake_capture_devices.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

class AScreen : public testing::Test {
 protected:
    AScreen() { screen = *Screen::open(devices, phone, clock); }
    void show(const PixelBuffer& frame) { ASSERT_TRUE(devices.send("A1", frame)); }

    const CaptureDeviceInfo phone = FakeCaptureDevices::phone("A1", "Ada's iPhone");
    ManualClock clock;
    FakeCaptureDevices devices;
    std::shared_ptr<Screen> screen;
};

TEST_F(AScreen, HasNothingBeforeTheFirstFrame) {
    show(PixelBuffer());
    EXPECT_FALSE(screen->latest());
    EXPECT_FALSE(screen->frame());
    EXPECT_FALSE(screen->frameAge());
    EXPECT_FALSE(screen->size());
    EXPECT_FALSE(screen->snapshot({}));
    EXPECT_FALSE(screen->thumbnail(90, 195));
}

TEST_F(AScreen, HoldsTheNewestFrameAndItsAge) {
    const PixelBuffer newest = pictures::plain(30, 60, pictures::kWhite);
    show(pictures::plain(10, 20, pictures::kBlack));
    clock.advance(seconds(5));
    show(newest);
    clock.advance(seconds(1.5));

    const auto latest = screen->latest().value();
    EXPECT_TRUE(latest.frame.sharesPixelsWith(newest));
    EXPECT_DOUBLE_EQ(latest.ageSeconds, 1.5);
    EXPECT_DOUBLE_EQ(*screen->frameAge(), 1.5);
    EXPECT_EQ(screen->size(), (Size{30, 60}));
}

TEST_F(AScreen, GivesThePictureAsFileAndAsThumbnail) {
    const std::uint64_t copiesBefore = PixelBuffer::copiesMade();
    show(pictures::drawn(120, 260,
                         [](int, int y) { return y < 130 ? pictures::kBlack : pictures::kWhite; }));
    const auto image = decodeImage(*screen->snapshot({.maxEdge = 130})).value();
    EXPECT_EQ(pictures::sizeOf(image), std::pair(60, 130));
    const auto grey = screen->thumbnail(3, 4).value();
    EXPECT_EQ(grey, (Bytes{0, 0, 0, 0, 0, 0, 255, 255, 255, 255, 255, 255}));
    EXPECT_EQ(PixelBuffer::copiesMade(), copiesBefore);
}

TEST_F(AScreen, AfterStopNoFrameArrivesAndTheLastOneStays) {
    show(pictures::plain(10, 20, pictures::kBlack));
    screen->stop();
    EXPECT_FALSE(devices.send("A1", pictures::plain(1, 1, pictures::kBlack)));
    EXPECT_EQ(screen->size(), (Size{10, 20}));
    screen->stop();
}

// A frame that counts how many of its kind are alive.
PixelBuffer counted(std::atomic<int>& alive, std::atomic<int>& most) {
    const PixelBuffer frame = pictures::plain(8, 8, pictures::kBlack);
    const int now = ++alive;
    most = std::max<int>(most, now);  // only one thread makes frames
    const std::shared_ptr<const void> owner(nullptr, [&alive, frame](const void*) { --alive; });
    return PixelBuffer::adopt(8, 8, 32, frame.pixels(), owner);
}

TEST_F(AScreen, FramesNeverPileUp) {
    std::atomic<int> alive = 0;
    std::atomic<int> most = 0;
    std::jthread reader([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) screen->latest();
    });
    for (int i = 0; i < 20'000; ++i) show(counted(alive, most));
    reader.request_stop();
    reader.join();
    // The newest, the pending one and the one in hand, of the screen and of its watch; what the
    // reader holds; the one being sent.
    EXPECT_LE(most, 10);
    EXPECT_TRUE(screen->frame());
    screen.reset();
    EXPECT_EQ(alive, 0);
}

TEST_F(AScreen, TellsWhenThePictureChanged) {
    const double before = millisecondsSince1970(clock.wallNow());
    show(pictures::plain(100, 200, pictures::kBlack));
    EXPECT_EQ(screen->changeTimes(0), std::vector<double>{});
    clock.advance(seconds(2));
    show(pictures::plain(100, 200, pictures::kWhite));
    EXPECT_EQ(screen->changeTimes(0), std::vector<double>{before + 2000});
    clock.advance(seconds(1));
    show(pictures::plain(30, 30, pictures::kWhite));
    EXPECT_EQ(screen->changeTimes(before + 2000), std::vector<double>{});
}

TEST(ScreenOpening, SaysWhyItFails) {
    ManualClock clock;
    FakeCaptureDevices devices;
    const auto phone = FakeCaptureDevices::phone("A1", "Ada's iPhone");
    devices.refuse("A1", "the device is in use");
    EXPECT_EQ(Screen::open(devices, phone, clock).error().message, "the device is in use");
    devices.refuse("A1", "");
    EXPECT_EQ(Screen::open(devices, phone, clock).error().message, "cannot capture Ada's iPhone");
}

}  // namespace
}  // namespace tandrel
