#include "platform/linux/x_window_stream.h"

#include <gtest/gtest.h>

#include "platform/linux/window_watch.h"
#include "platform/linux/x_desktop.h"
#include "support/eventually.h"

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
        return eventually([&] {
            window->fill(colour);
            return watch.shows(width, height, colour);
        });
    }

    std::unique_ptr<XDesktop> desktop;
    std::optional<XTestWindow> window;
    WindowWatch watch;
    std::unique_ptr<WindowStream> stream;
};

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
    for (int i = 0; i < 100; ++i) {
        window->resize(200 + i, 500 - i);
    }
    EXPECT_TRUE(awaitFilled(299, 401, kBlue));
}

TEST_P(XWindowStreamTest, HiddenIsSaidAndEndsWithTheWindowsReturn) {
    const std::string why = "window " + std::to_string(window->id()) +
                            " is minimised or on another desktop: bring it back, it may then be "
                            "covered";
    window->minimise();
    EXPECT_EQ(watch.awaitHidden(), why);
    WindowWatch late;
    const auto second = XWindowStream::open(window->id(), late.events(), GetParam());
    EXPECT_EQ(late.awaitHidden(), why) << "from the beginning";
    window->restore();
    EXPECT_TRUE(awaitFilled(300, 650, kGreen));
    window->moveToDesktop(1);
    EXPECT_EQ(watch.awaitHidden(), why);
    window->moveToDesktop(0);
    EXPECT_TRUE(awaitFilled(300, 650, kBlue));
}

TEST_P(XWindowStreamTest, ClosedIsTheEndAlsoInTheMiddleOfAFrame) {
    for (int i = 0; i < 200; ++i) {
        window->fill(i % 2 == 0 ? kGreen : kBlue);
        window->resize(1000 + i, 900 - i);
    }
    window->close();
    const std::string gone = "window " + std::to_string(window->id()) + " is gone";
    EXPECT_EQ(watch.awaitEnd(), gone);
    EXPECT_EQ(XWindowStream::open(window->id(), {}, GetParam()).error().message, gone);
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
                                         XWindowStream::Transfer::plain));

}  // namespace
}  // namespace tandrel
