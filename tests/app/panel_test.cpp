#include <csignal>
#include <future>

#include <gmock/gmock.h>

#include "app/running_program.h"
#include "app/x_display.h"
#include "platform/linux/x_desktop.h"

namespace tandrel {
namespace {

using Key = XDisplay::Key;
using namespace std::chrono_literals;

// The application on a display of its own, asking about the price button of the phone's shop.
class Panel : public testing::Test {
 protected:
    // Where the buttons are, from the panel's lower left corner.
    static constexpr int kDenyX = 124;
    static constexpr int kApproveX = 336;
    static constexpr int kButtonsAboveBottom = 45;
    static constexpr double kTimeout = 40;

    void SetUp() override { start("1280x1000", {}); }

    void start(const std::string& size, ChildProgram::Environment environment) {
        desktop = XDesktop::open(XDesktop::Manager::none, size);
        if (!desktop) GTEST_SKIP() << "Xvfb is not installed";
        display.emplace(desktop->x());
        environment["DISPLAY"] = desktop->name();
        environment["TANDREL_VIRTUAL_PHONE"] = "1";
        environment["TANDREL_GUARD_TIMEOUT"] = "40";
        program = std::make_unique<RunningProgram>(environment);
        program->awaitMatched();
        tap("Shop", 0.15, 0.13);
        tap("Canvas tote bag", 0.5, 0.2);
        program->awaitText("Add to basket");
        ask();
    }

    // Once that text has been read, which may take seconds when threads are watched.
    void tap(const std::string& text, double x, double y) {
        program->awaitText(text);
        const auto tapped = program->post("/tap", {{"x", x}, {"y", y}, {"fraction", true}});
        ASSERT_EQ(tapped.status, 200) << toText(tapped.body);
    }

    void ask() {
        reply = std::async(std::launch::async, [this] {
            return program->post("/tap", {{"x", 0.5}, {"y", 0.59}, {"fraction", true}});
        });
        while (!window && reply.wait_for(20ms) == std::future_status::timeout) {
            window = display->find("Tandrel: approve a payment");
        }
        ASSERT_TRUE(window) << "not asked: " << toText(reply.get().body);
        display->focus(*window);
    }

    void click(int fromLeft) {
        display->click(window->x + fromLeft, window->y + window->height - kButtonsAboveBottom);
    }

    // Does it again and again until the question is over, for at most the panel's time.
    template <typename Deed>
    bool repeatUntilAnswered(Deed deed, int times) {
        for (int i = 0; i < times; ++i) {
            deed();
            if (reply.wait_for(200ms) == std::future_status::ready) return true;
        }
        return false;
    }

    bool phoneShows(const std::string& text) const {
        return toText(program->get("/look?maxEdge=200").body).find(text) != std::string::npos;
    }

    std::unique_ptr<XDesktop> desktop;
    std::optional<XDisplay> display;
    std::unique_ptr<RunningProgram> program;
    std::optional<XDisplay::Window> window;
    std::future<ClientResponse> reply;
};

TEST_F(Panel, ApprovesByMouseAndNotInTheFirstSecond) {
    click(kApproveX);
    const bool wasEarly = program->get("/status").json().value("asking", 0.0) > kTimeout - 0.9;
    if (wasEarly) {
        EXPECT_EQ(reply.wait_for(300ms), std::future_status::timeout) << "not armed yet";
    }
    ASSERT_TRUE(repeatUntilAnswered([this] { click(kApproveX); }, 100));
    EXPECT_EQ(reply.get().status, 200);
    program->get("/settle");
    EXPECT_TRUE(phoneShows("side button"));
    EXPECT_FALSE(display->find("Tandrel: approve a payment"));
}

TEST_F(Panel, DeniesByMouse) {
    ASSERT_TRUE(repeatUntilAnswered([this] { click(kDenyX); }, 100));
    const ClientResponse denied = reply.get();
    EXPECT_EQ(denied.status, 403);
    EXPECT_EQ(
        denied.json()["error"],
        "The owner denied this on their Mac (tap “€12.50”: €12.50). Don't retry this payment.");
    EXPECT_FALSE(phoneShows("side button"));
}

class PanelKeys : public Panel, public testing::WithParamInterface<std::vector<Key>> {};

TEST_P(PanelKeys, NeverApprove) {
    const auto press = [&] {
        for (const Key key : GetParam()) display->press(key);
    };
    if (!repeatUntilAnswered(press, 10)) display->press(Key::escape);
    EXPECT_EQ(reply.get().status, 403);
    EXPECT_FALSE(phoneShows("side button"));
}

INSTANTIATE_TEST_SUITE_P(All, PanelKeys,
                         testing::Values(std::vector{Key::enter}, std::vector{Key::tab, Key::enter},
                                         std::vector{Key::tab, Key::space},
                                         std::vector{Key::tab, Key::tab, Key::space}));

TEST_F(Panel, StaysAboveOtherWindowsOnEveryDesktopUntilEscapeDenies) {
    const XConnection& x = desktop->x();
    EXPECT_THAT(
        x.numbers(window->id, x.atom("_NET_WM_STATE")),
        testing::IsSupersetOf({x.atom("_NET_WM_STATE_ABOVE"), x.atom("_NET_WM_STATE_STICKY")}));
    EXPECT_THAT(x.numbers(window->id, x.atom("_NET_WM_DESKTOP")), testing::ElementsAre(~0U));
    display->press(Key::escape);
    ASSERT_EQ(reply.wait_for(30s), std::future_status::ready);
    EXPECT_EQ(reply.get().status, 403);
}

// Text twice as large on the smallest screen that a computer has.
class PanelOnSmallScreen : public Panel {
 protected:
    void SetUp() override { start("800x600", {{"QT_FONT_DPI", "192"}}); }
};

TEST_F(PanelOnSmallScreen, ShowsItsButtonsAllTheSame) {
    constexpr int kInsideDenyX = 84;
    constexpr int kInsideDenyAboveBottom = 90;
    EXPECT_GE(window->x, 0);
    EXPECT_GE(window->y, 0);
    EXPECT_LE(window->x + window->width, 800);
    EXPECT_LE(window->y + window->height, 600);
    const auto deny = [this] {
        display->click(window->x + kInsideDenyX,
                       window->y + window->height - kInsideDenyAboveBottom);
    };
    ASSERT_TRUE(repeatUntilAnswered(deny, 100));
    EXPECT_EQ(reply.get().status, 403);
}

TEST_F(Panel, ClosesWhenTheProgramEnds) {
    program->process().signal(SIGINT);
    EXPECT_EQ(program->process().wait(), 0) << program->process().output();
    reply.wait();
}

}  // namespace
}  // namespace tandrel
