#include "platform/linux/x_window_stream.h"

#include <gtest/gtest.h>

#include "platform/linux/window_watch.h"
#include "platform/linux/x_desktop.h"

namespace tandrel {
namespace {

constexpr std::uint32_t kRed = 0xff0000;
constexpr std::uint32_t kGreen = 0x00ff00;
constexpr std::uint32_t kBlue = 0x0000ff;

// Real windows on a real display with a window manager.
class XWindowStreamTest : public testing::TestWithParam<XWindowStream::Transfer> {
 protected:
    void SetUp() override {
        desktop = XDesktop::open(XDesktop::Manager::openbox);
        if (!desktop) GTEST_SKIP() << "Xvfb or openbox is not installed";
        window.emplace(*desktop, "phone", XTestWindow::Place{});
        window->fill(kRed);
        auto opened = XWindowStream::open(window->id(), watch.events(), GetParam());
        ASSERT_TRUE(opened) << opened.error().message;
        stream = *std::move(opened);
        ASSERT_TRUE(watch.awaitFrame(300, 650, kRed)) << "the first frame comes by itself";
    }

    // The window manager takes its time, and what was drawn before is gone.
    bool awaitFilled(int width, int height, std::uint32_t colour) {
        return desktop->await([&] {
            window->fill(colour);
            return watch.shows(width, height, colour);
        });
    }

    std::unique_ptr<XDesktop> desktop;
    std::optional<XTestWindow> window;
    WindowWatch watch;
    std::unique_ptr<WindowStream> stream;
};

TEST_P(XWindowStreamTest, DrawingBringsTheNewPicture) {
    window->fill(kGreen);
    EXPECT_TRUE(watch.awaitFrame(300, 650, kGreen));
    window->fill(kBlue);
    EXPECT_TRUE(watch.awaitFrame(300, 650, kBlue));
}

TEST_P(XWindowStreamTest, CoveredOrOffTheScreenItGoesOn) {
    XTestWindow cover(*desktop, "cover", {0, 0, 900, 900});
    cover.raise();
    cover.fill(0xffffff);
    window->fill(kGreen);
    EXPECT_TRUE(watch.awaitFrame(300, 650, kGreen));
    window->move(-3000, -3000);
    window->fill(kBlue);
    EXPECT_TRUE(watch.awaitFrame(300, 650, kBlue));
}

TEST_P(XWindowStreamTest, FollowsTheWindowsSize) {
    window->resize(650, 300);
    EXPECT_TRUE(awaitFilled(650, 300, kGreen));
    for (std::uint16_t i = 0; i < 100; ++i) {
        window->resize(static_cast<std::uint16_t>(200 + i), static_cast<std::uint16_t>(500 - i));
    }
    EXPECT_TRUE(awaitFilled(299, 401, kBlue));
}

TEST_P(XWindowStreamTest, MinimisedIsSaidAndEndsWithTheWindowsReturn) {
    window->minimise();
    EXPECT_EQ(watch.awaitHidden(), "window " + std::to_string(window->id()) +
                                       " is minimised or on another desktop: bring it back, it may "
                                       "then be covered");
    window->restore();
    EXPECT_TRUE(awaitFilled(300, 650, kGreen));
}

TEST_P(XWindowStreamTest, OnAnotherDesktopIsSaidAndEndsWithTheWindowsReturn) {
    window->moveToDesktop(1);
    EXPECT_TRUE(watch.awaitHidden().ends_with(
        "is minimised or on another desktop: bring it back, it may then be covered"));
    window->moveToDesktop(0);
    EXPECT_TRUE(awaitFilled(300, 650, kBlue));
}

TEST_P(XWindowStreamTest, ClosedIsTheEndAlsoInTheMiddleOfAFrame) {
    for (std::uint16_t i = 0; i < 200; ++i) {
        window->fill(i % 2 == 0 ? kGreen : kBlue);
        window->resize(static_cast<std::uint16_t>(1000 + i), static_cast<std::uint16_t>(900 - i));
    }
    window->close();
    EXPECT_EQ(watch.awaitEnd(), "window " + std::to_string(window->id()) + " is gone");
}

TEST_P(XWindowStreamTest, AServerThatGoesAwayIsTheEnd) {
    desktop->kill();
    EXPECT_EQ(watch.awaitEnd(), "the display that showed the window is gone");
}

TEST_P(XWindowStreamTest, AStreamEndsWhileTheWindowIsDrawn) {
    for (int i = 0; i < 20; ++i) {
        WindowWatch other;
        auto second = XWindowStream::open(window->id(), other.events(), GetParam());
        ASSERT_TRUE(second);
        window->fill(i % 2 == 0 ? kGreen : kBlue);
        second->reset();
    }
    window->fill(kRed);
    EXPECT_TRUE(watch.awaitFrame(300, 650, kRed)) << "one capture's end is not another's";
}

INSTANTIATE_TEST_SUITE_P(Transfers, XWindowStreamTest,
                         testing::Values(XWindowStream::Transfer::shared,
                                         XWindowStream::Transfer::plain),
                         [](const auto& row) {
                             return row.param == XWindowStream::Transfer::shared ? "shared"
                                                                                 : "plain";
                         });

TEST(XWindowStream, AMinimisedWindowIsSaidAtOnceAndAMissingOneIsAnError) {
    const auto desktop = XDesktop::open(XDesktop::Manager::openbox);
    if (!desktop) GTEST_SKIP() << "Xvfb or openbox is not installed";
    XTestWindow window(*desktop, "phone", {});
    window.minimise();
    WindowWatch watch;
    const auto stream = XWindowStream::open(window.id(), watch.events());
    ASSERT_TRUE(stream);
    EXPECT_NE(watch.awaitHidden(), "");
    EXPECT_EQ(XWindowStream::open(4'000'000'000, watch.events()).error().message,
              "window 4000000000 is gone");
}

}  // namespace
}  // namespace tandrel
