#include "platform/linux/x_synthetic_input.h"

#include <algorithm>
#include <thread>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "platform/linux/x_desktop.h"
#include "support/eventually.h"

namespace tandrel {
namespace {

class XSyntheticInputTest : public testing::TestWithParam<XDesktop::Manager> {
 protected:
    void SetUp() override {
        desktop = XDesktop::open(GetParam());
        if (!desktop) GTEST_SKIP() << "Xvfb or openbox is not installed";
        window.emplace(*desktop, "phone", XTestWindow::Place{});
        const std::uint32_t wanted = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                     XCB_EVENT_MASK_BUTTON_MOTION | XCB_EVENT_MASK_KEY_PRESS;
        xcb_change_window_attributes(desktop->x().get(), window->id(), XCB_CW_EVENT_MASK, &wanted);
        auto opened = XSyntheticInput::open();
        ASSERT_TRUE(opened) << opened.error().message;
        input = *std::move(opened);
    }
    // A point of the window on the desktop.
    DesktopPoint inside(double x, double y) const {
        const XConnection& c = desktop->x();
        const auto place = xReply(xcb_translate_coordinates_reply(
            c.get(), xcb_translate_coordinates(c.get(), window->id(), c.root(), 0, 0), nullptr));
        return {place->dst_x + x, place->dst_y + y};
    }
    // The code of the key that has the character; 0 when none has it.
    int keyOf(std::uint32_t keysym) const {
        xcb_connection_t* c = desktop->x().get();
        constexpr int kFirst = 8;
        const auto reply = xReply(
            xcb_get_keyboard_mapping_reply(c, xcb_get_keyboard_mapping(c, kFirst, 248), nullptr));
        const xcb_keysym_t* all = xcb_get_keyboard_mapping_keysyms(reply.get());
        const int count = xcb_get_keyboard_mapping_keysyms_length(reply.get());
        const auto at = std::find(all, all + count, keysym) - all;
        return at == count ? 0 : kFirst + static_cast<int>(at) / reply->keysyms_per_keycode;
    }
    // What the display has told the window so far, as "press 30,40" and "key 38 state 4".
    const std::vector<std::string>& events() {
        const XConnection& x = desktop->x();
        x.sync();
        while (const auto event = xReply(xcb_poll_for_event(x.get()))) {
            const auto& at = reinterpret_cast<const xcb_button_press_event_t&>(*event);
            const int type = event->response_type & 0x7f;
            if (type == XCB_KEY_PRESS) {
                events_.push_back(fmt::format("key {} state {}", at.detail, at.state));
            } else if (type >= XCB_BUTTON_PRESS && type <= XCB_MOTION_NOTIFY) {
                constexpr const char* kNames[] = {"press", "release", "move"};
                events_.push_back(fmt::format("{} {},{}", kNames[type - XCB_BUTTON_PRESS],
                                              at.event_x, at.event_y));
            }
        }
        return events_;
    }
    void expectEvents(const std::vector<std::string>& wanted) {
        eventually([&] { return events() == wanted; });
        EXPECT_EQ(events(), wanted);
    }

    std::unique_ptr<XDesktop> desktop;
    std::optional<XTestWindow> window;
    std::unique_ptr<SyntheticInput> input;

 private:
    std::vector<std::string> events_;
};

TEST_P(XSyntheticInputTest, AClickComesToTheWindowBelowACover) {
    XTestWindow cover(*desktop, "cover", {0, 0, 900, 900});
    cover.raise();
    ASSERT_TRUE(input->activate(window->id()));
    const auto clicked = input->click(inside(30, 40));
    ASSERT_TRUE(clicked) << clicked.error().message;
    expectEvents({"press 30,40", "release 30,40"});
}

TEST_P(XSyntheticInputTest, ADragComesFromEndToEnd) {
    ASSERT_TRUE(input->activate(window->id()));
    ASSERT_TRUE(input->drag(inside(100, 600), inside(120, 100), std::chrono::milliseconds(64)));
    expectEvents({"press 100,600", "move 105,475", "move 110,350", "move 115,225", "move 120,100",
                  "release 120,100"});
}

TEST_P(XSyntheticInputTest, TextAndKeysGoToTheActivatedWindow) {
    const XTestWindow other(*desktop, "typed into before", {400, 0, 300, 300});
    ASSERT_TRUE(input->activate(other.id()));
    ASSERT_TRUE(input->activate(window->id()));
    ASSERT_TRUE(input->type("aB\n"));
    ASSERT_TRUE(input->key("z", {"ctrl", "shift"}));
    std::vector<std::string> wanted;
    constexpr std::uint32_t kShift = 0xffe1, kControl = 0xffe3, kReturn = 0xff0d;
    const std::pair<std::uint32_t, int> keys[] = {
        {'a', 0}, {kShift, 0}, {'B', 1}, {kReturn, 0}, {kControl, 0}, {kShift, 4}, {'z', 5}};
    for (const auto& [keysym, state] : keys) {
        wanted.push_back(fmt::format("key {} state {}", keyOf(keysym), state));
    }
    expectEvents(wanted);
}

TEST_P(XSyntheticInputTest, ACharacterThatNoKeyHasIsLentOne) {
    constexpr std::uint32_t kWord = 0x01005b57;  // 字
    ASSERT_EQ(keyOf(kWord), 0);
    ASSERT_TRUE(input->activate(window->id()));
    // The key has the character for a moment only: typed until it was looked up in that moment.
    std::jthread typist([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) EXPECT_TRUE(input->type("字"));
    });
    int lent = 0;
    EXPECT_TRUE(eventually([&] { return (lent = keyOf(kWord)) != 0; }));
    const std::string press = fmt::format("key {} state 0", lent);
    EXPECT_TRUE(eventually([&] { return std::ranges::count(events(), press) > 0; }));
    typist.request_stop();
    typist.join();
    EXPECT_EQ(keyOf(kWord), 0) << "it is given back";
}

TEST_P(XSyntheticInputTest, WhatCannotBeDoneIsSaid) {
    EXPECT_EQ(input->activate(4'000'000'000).error().message, "window 4000000000 is gone");
    ASSERT_TRUE(input->activate(window->id()));
    EXPECT_EQ(input->click(inside(-3000, 0)).error().message,
              "another window covers that place, or it lies outside the desktop");
    EXPECT_EQ(input->key("nokey", {}).error().message, "unknown key nokey");
    EXPECT_EQ(input->key("a", {"hyper"}).error().message, "unknown modifier hyper");
    desktop->kill();
    EXPECT_TRUE(eventually([&] { return !input->click({}).has_value(); }));
    EXPECT_EQ(input->type("a").error().message, "the display is gone");
}

TEST_P(XSyntheticInputTest, AMinimisedWindowIsBroughtBack) {
    window->minimise();  // which a window manager does
    if (GetParam() == XDesktop::Manager::openbox) {
        ASSERT_TRUE(eventually([&] { return !window->isShown(); }));
    }
    ASSERT_TRUE(input->activate(window->id()));
    EXPECT_TRUE(window->isShown());
}

INSTANTIATE_TEST_SUITE_P(Managers, XSyntheticInputTest,
                         testing::Values(XDesktop::Manager::none, XDesktop::Manager::openbox));

}  // namespace
}  // namespace tandrel
