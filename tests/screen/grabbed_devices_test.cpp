#include "screen/grabbed_devices.h"

#include <gtest/gtest.h>

#include "image/pictures.h"
#include "screen/fake_capture_devices.h"
#include "screen/snapshot.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

constexpr PixelRect kUpright{711, 0, 498, 1080};
constexpr PixelRect kOnItsSide{0, 98, 1920, 883};
constexpr const char* kOwnId = "grabber-1";

// What a grabber shows of a phone: its screen, light, between black bars.
PixelBuffer grabbed(const PixelRect& screen) {
    return pictures::onBlack(1920, 1080, screen, {200, 210, 220});
}

class GrabbedDevicesTest : public testing::Test {
 protected:
    GrabbedDevicesTest() {
        grabbers_.plugIn(
            {kOwnId, "iPhone on Grabber", "iOS Device (grabber)", true, CaptureLink::grabber});
        devices_.allowScreenCaptureDevices();
        devices_.setOnDevicesChanged([this] { ++changes_; });
        open();
    }
    void open() {
        session_.reset();
        auto session = devices_.open(devices_.devices().at(0), [this](const PixelBuffer& frame) {
            shown_ = Size{frame.width(), frame.height()};
        });
        ASSERT_TRUE(session) << session.error().message;
        session_ = *std::move(session);
    }
    // The size of what is shown after this frame; none when nothing new is.
    std::optional<Size> show(const PixelBuffer& frame) {
        shown_.reset();
        grabbers_.send(kOwnId, frame);
        return shown_;
    }
    std::string id() { return devices_.devices().at(0).id; }

    FakeCaptureDevices grabbers_;
    ManualClock clock_;
    GrabbedDevices devices_{grabbers_, clock_};
    int changes_ = 0;
    std::optional<Size> shown_;
    std::unique_ptr<CaptureSession> session_;
    const PixelBuffer black_ = pictures::plain(1920, 1080, pictures::kBlack);
};

TEST_F(GrabbedDevicesTest, CutsTheBlackBarsAndFollowsATurnOfThePhone) {
    EXPECT_EQ(show(grabbed(kUpright)), (Size{498, 1080}));
    EXPECT_EQ(show(grabbed(kOnItsSide)), (Size{1920, 883}));
    EXPECT_EQ(show(grabbed(kUpright)), (Size{498, 1080}));
}

TEST_F(GrabbedDevicesTest, KeepsItsPlaceWhereThePictureIsDark) {
    show(grabbed(kUpright));
    EXPECT_EQ(show(black_), (Size{498, 1080}));
    const PixelRect button{900, 500, 100, 60};
    EXPECT_EQ(show(grabbed(button)), (Size{498, 1080}));
}

TEST_F(GrabbedDevicesTest, IsAnotherScreenAfterALongBlack) {
    show(grabbed(kUpright));
    show(black_);
    clock_.advance(GrabbedDevices::kLongestBlack - std::chrono::milliseconds(1));
    EXPECT_TRUE(show(grabbed(kUpright))) << "not long";
    EXPECT_EQ(id(), kOwnId);
    show(black_);
    clock_.advance(GrabbedDevices::kLongestBlack);
    EXPECT_TRUE(show(black_)) << "black is what it shows";
    EXPECT_FALSE(show(grabbed(kUpright))) << "whose is it?";
    EXPECT_EQ(changes_, 1);
    EXPECT_EQ(id(), "grabber-1.1");
    open();
    EXPECT_TRUE(show(grabbed(kUpright)));
}

TEST_F(GrabbedDevicesTest, LetsPhonesOnTheirOwnCableThrough) {
    grabbers_.unplug(kOwnId);
    grabbers_.plugIn(FakeCaptureDevices::phone("A", "Ada's iPhone"));
    EXPECT_EQ(id(), "A");
    open();
    grabbers_.send("A", grabbed(kUpright));
    EXPECT_EQ(shown_, (Size{1920, 1080}));
}

}  // namespace
}  // namespace tandrel
