#include "screen/screen_capture.h"

#include <atomic>

#include <gtest/gtest.h>

#include "image/pictures.h"
#include "screen/fake_capture_devices.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

const CaptureDeviceInfo kAda = FakeCaptureDevices::phone("A1", "Ada's iPhone");
const CaptureDeviceInfo kBob = FakeCaptureDevices::phone("B2", "Bob's iPhone");

class Capturing : public testing::Test {
 protected:
    Capturing() {
        capture.setOnScreensChanged([this] {
            capture.all();  // which the callback may ask for
            ++changes;
            changes.notify_all();
        });
    }

    std::vector<std::string> names() {
        std::vector<std::string> result;
        for (const auto& screen : capture.all()) result.push_back(screen->name());
        return result;
    }
    // Waits until the capture has told of `count` changes in all.
    void awaitChanges(int count) {
        for (int seen = changes; seen < count; seen = changes) changes.wait(seen);
    }

    ManualClock clock;
    FakeCaptureDevices devices;
    std::atomic<int> changes = 0;
    ScreenCapture capture{devices, clock};
};

TEST_F(Capturing, OpensThePhonesThatAreThere) {
    devices.plugIn({"C", "USB Camera", "UVC Camera VendorID_1133", true});
    devices.plugIn({"D", "Dan's iPhone", "iOS Device", false});
    devices.plugIn(kBob);
    devices.plugIn(kAda);
    capture.start();
    EXPECT_EQ(names(), (std::vector<std::string>{"Ada's iPhone", "Bob's iPhone"}));
    EXPECT_EQ(changes, 1);
}

TEST_F(Capturing, FollowsAndLogsPlugging) {
    testing::internal::CaptureStderr();
    capture.start();
    devices.plugIn(kAda);
    awaitChanges(1);
    ASSERT_EQ(names(), std::vector<std::string>{"Ada's iPhone"});
    devices.send("A1", pictures::plain(10, 20, pictures::kWhite));
    const auto first = capture.all().front();
    ASSERT_TRUE(first->frame());

    devices.unplug("A1");
    awaitChanges(2);
    EXPECT_EQ(names(), std::vector<std::string>{});
    EXPECT_FALSE(devices.send("A1", pictures::plain(10, 20, pictures::kWhite)));
    const std::string lines = testing::internal::GetCapturedStderr();
    std::size_t from = 0;
    for (const char* line : {"] camera access granted\n",
                             "] no iPhone screen yet (plug in over USB and trust this Mac)\n",
                             "] capturing Ada's iPhone (A1)\n", "] screen gone: Ada's iPhone\n",
                             "] no iPhone screen yet (plug in over USB and trust this Mac)\n"}) {
        from = lines.find(line, from);
        ASSERT_NE(from, std::string::npos) << line << " in\n" << lines;
    }

    devices.plugIn(kAda);
    awaitChanges(3);
    ASSERT_EQ(capture.all().size(), 1u);
    EXPECT_NE(capture.all().front(), first);
    EXPECT_FALSE(capture.all().front()->frame());
    devices.plugIn(kBob);
    awaitChanges(4);
    EXPECT_EQ(devices.opened("A1"), 2) << "not again when another comes";
}

TEST_F(Capturing, AFailedDeviceIsTriedAtTheNextRefresh) {
    devices.plugIn(kAda);
    devices.refuse("A1", "the device is in use");
    testing::internal::CaptureStderr();
    capture.start();
    EXPECT_NE(testing::internal::GetCapturedStderr().find(
                  "capture failed for Ada's iPhone: the device is in use"),
              std::string::npos);
    EXPECT_EQ(names(), std::vector<std::string>{});
    EXPECT_EQ(changes, 0);

    devices.refuse("A1", std::nullopt);
    devices.tellChange();
    awaitChanges(1);
    EXPECT_EQ(names(), std::vector<std::string>{"Ada's iPhone"});
}

TEST_F(Capturing, RestartOpensEverythingAfresh) {
    devices.plugIn(kAda);
    capture.start();
    devices.send("A1", pictures::plain(10, 20, pictures::kWhite));
    const auto old = capture.all().front();
    capture.restart();
    ASSERT_EQ(capture.all().size(), 1u);
    EXPECT_NE(capture.all().front(), old);
    EXPECT_FALSE(capture.all().front()->frame());
    EXPECT_EQ(devices.opened("A1"), 2);
}

TEST_F(Capturing, NothingHappensBeforeAccessIsAnswered) {
    devices.holdAccess();
    devices.plugIn(kAda);
    capture.start();
    EXPECT_EQ(names(), std::vector<std::string>{});
    testing::internal::CaptureStderr();
    devices.answerAccess(false);
    awaitChanges(1);
    EXPECT_NE(testing::internal::GetCapturedStderr().find("camera access denied"),
              std::string::npos);
}

TEST_F(Capturing, StopEndsCapturesAndCallbacks) {
    devices.plugIn(kAda);
    capture.start();
    capture.stop();
    EXPECT_EQ(names(), std::vector<std::string>{});
    EXPECT_FALSE(devices.send("A1", pictures::plain(1, 1, pictures::kWhite)));
    devices.plugIn(kBob);
    capture.restart();
    EXPECT_EQ(names(), std::vector<std::string>{});
    EXPECT_EQ(devices.opened("B2"), 0);
    EXPECT_EQ(changes, 1);
}

TEST(ScreenCaptureEnd, AnAnswerThatComesLateFindsNobody) {
    ManualClock clock;
    FakeCaptureDevices devices;
    devices.holdAccess();
    devices.plugIn(kAda);
    {
        ScreenCapture(devices, clock).start();
    }
    devices.answerAccess(true);
    EXPECT_EQ(devices.opened("A1"), 0);
}

}  // namespace
}  // namespace tandrel
