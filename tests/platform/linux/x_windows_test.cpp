#include "platform/linux/x_windows.h"

#include <algorithm>

#include <gtest/gtest.h>

#include "platform/linux/x_desktop.h"
#include "support/eventually.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

std::optional<WinInfo> titled(const std::string& title, Windows& windows) {
    const auto all = windows.all();
    if (!all) return std::nullopt;
    const auto found = std::ranges::find(*all, title, &WinInfo::title);
    return found == all->end() ? std::nullopt : std::optional(*found);
}

class XWindowsTest : public testing::TestWithParam<XDesktop::Manager> {
 protected:
    void SetUp() override {
        desktop = XDesktop::open(GetParam());
        if (!desktop) GTEST_SKIP() << "Xvfb or openbox is not installed";
    }
    std::optional<WinInfo> await(const std::string& title) {
        std::optional<WinInfo> found;
        eventually([&] { return (found = titled(title, windows)).has_value(); });
        return found;
    }

    std::unique_ptr<XDesktop> desktop;
    XWindows windows{0};  // those of the test, too
};

TEST_P(XWindowsTest, AWindowWithNothingButATitleIsToldWithTheProcessBehindIt) {
    XTestWindow window(*desktop, "OpenGL renderer", {});
    const auto info = await("OpenGL renderer").value();
    EXPECT_EQ(info.pid, ::getpid());
    EXPECT_EQ(info.owner, "test_linux");
    EXPECT_EQ(info.frame.width, 300);
    EXPECT_EQ(info.frame.height, 650);
    EXPECT_TRUE(info.onScreen);
    EXPECT_EQ(info.layer, 0);
    XWindows others;
    EXPECT_FALSE(titled("OpenGL renderer", others)) << "one's own windows are left out";
    XTestWindow disguised(*desktop, "disguised", {});
    disguised.setText(XCB_ATOM_WM_CLASS, std::string("uxplay\0uxplay\0", 14));
    EXPECT_EQ(await("disguised")->owner, "test_linux") << "a class makes no receiver";
    if (GetParam() == XDesktop::Manager::none) return;
    window.minimise();
    EXPECT_TRUE(eventually([&] { return !await("OpenGL renderer")->onScreen; }));
}

TEST_P(XWindowsTest, AKnownReceiversWindowIsToldAsOne) {
    const TemporaryFolder folder;
    const auto program = folder.path() / "uxplay";
    std::filesystem::copy_file(TANDREL_BIN_DIR "/draw_window", program);
    const ChildProgram receiver({program}, {{"DISPLAY", desktop->name()}});
    const auto info = await("OpenGL renderer").value();
    EXPECT_EQ(info.owner, "AirPlay receiver (uxplay)");
    EXPECT_EQ(info.pid, receiver.pid());
}

INSTANTIATE_TEST_SUITE_P(Managers, XWindowsTest,
                         testing::Values(XDesktop::Manager::none, XDesktop::Manager::openbox));

TEST(XWindowsAbsent, WithoutADisplayTheErrorSaysWhatToDo) {
    const EnvironmentVariable display("DISPLAY", std::nullopt);
    XWindows windows;
    {
        const EnvironmentVariable wayland("WAYLAND_DISPLAY", std::nullopt);
        EXPECT_EQ(windows.all().error().message,
                  "there is no display to look for windows on (DISPLAY is not set)");
    }
    const EnvironmentVariable wayland("WAYLAND_DISPLAY", "wayland-0");
    EXPECT_EQ(windows.all().error().message,
              "Tandrel cannot see the windows of a Wayland desktop: let it receive AirPlay itself "
              "(tandrel-app --set link airplay), or start your receiver with \"-vs ximagesink\"");
    const EnvironmentVariable wrong("DISPLAY", ":4711");
    EXPECT_EQ(windows.all().error().message, "can't reach the display :4711");
}

TEST(XWindowsGone, ADisplayThatComesBackIsSeenAgain) {
    XWindows windows(0);
    {
        const auto desktop = XDesktop::open(XDesktop::Manager::none);
        if (!desktop) GTEST_SKIP() << "Xvfb is not installed";
        EXPECT_TRUE(windows.all());
        desktop->kill();
        EXPECT_TRUE(eventually([&] { return !windows.all().has_value(); }));
    }
    const auto again = XDesktop::open(XDesktop::Manager::none);
    EXPECT_TRUE(windows.all());
}

}  // namespace
}  // namespace tandrel
