#include "platform/linux/x_synthetic_input.h"

#include <algorithm>
#include <thread>

#include <gtest/gtest.h>

#include "platform/linux/x_desktop.h"

namespace tandrel {
namespace {

// What the display tells one window of pointer and keyboard.
class InputLog {
 public:
    InputLog(const XDesktop& desktop, const XTestWindow& window) : desktop_(desktop) {
        const std::uint32_t wanted = XCB_EVENT_MASK_BUTTON_PRESS | XCB_EVENT_MASK_BUTTON_RELEASE |
                                     XCB_EVENT_MASK_BUTTON_MOTION | XCB_EVENT_MASK_KEY_PRESS;
        xcb_change_window_attributes(desktop.x().get(), window.id(), XCB_CW_EVENT_MASK, &wanted);
        desktop.x().sync();
    }
    // The events so far as "press 30,40" and "key 38 state 4"; the display has told all that was
    // sent before.
    std::vector<std::string> lines() {
        const XConnection& x = desktop_.x();
        x.sync();
        while (const auto event = xReply(xcb_poll_for_event(x.get()))) take(*event);
        return lines_;
    }
    bool await(const std::vector<std::string>& wanted) {
        return desktop_.await([&] { return lines() == wanted; });
    }

 private:
    void take(const xcb_generic_event_t& event) {
        const auto& at = reinterpret_cast<const xcb_button_press_event_t&>(event);
        const std::string place = std::to_string(at.event_x) + "," + std::to_string(at.event_y);
        switch (event.response_type & 0x7f) {
            case XCB_BUTTON_PRESS:
                lines_.push_back("press " + place);
                break;
            case XCB_BUTTON_RELEASE:
                lines_.push_back("release " + place);
                break;
            case XCB_MOTION_NOTIFY:
                lines_.push_back("move " + place);
                break;
            case XCB_KEY_PRESS:
                lines_.push_back("key " + std::to_string(at.detail) + " state " +
                                 std::to_string(at.state));
                break;
            default:
                break;
        }
    }

    const XDesktop& desktop_;
    std::vector<std::string> lines_;
};

class XSyntheticInputTest : public testing::TestWithParam<XDesktop::Manager> {
 protected:
    void SetUp() override {
        desktop = XDesktop::open(GetParam());
        if (!desktop) GTEST_SKIP() << "Xvfb or openbox is not installed";
        window.emplace(*desktop, "phone", XTestWindow::Place{});
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
    // The key that makes the character, with or without Shift, as "key CODE".
    std::string key(std::uint32_t keysym) const {
        const XConnection& x = desktop->x();
        const xcb_setup_t* setup = xcb_get_setup(x.get());
        const int count = setup->max_keycode - setup->min_keycode + 1;
        const auto reply = xReply(xcb_get_keyboard_mapping_reply(
            x.get(),
            xcb_get_keyboard_mapping(x.get(), setup->min_keycode, static_cast<std::uint8_t>(count)),
            nullptr));
        const int perCode = reply->keysyms_per_keycode;
        const xcb_keysym_t* first = xcb_get_keyboard_mapping_keysyms(reply.get());
        for (int i = 0; i < count; ++i) {
            const xcb_keysym_t* levels = first + static_cast<std::ptrdiff_t>(i) * perCode;
            if (std::find(levels, levels + 2, keysym) != levels + 2) {
                return "key " + std::to_string(setup->min_keycode + i);
            }
        }
        return "no key";
    }

    std::unique_ptr<XDesktop> desktop;
    std::optional<XTestWindow> window;
    std::unique_ptr<SyntheticInput> input;
};

TEST_P(XSyntheticInputTest, AClickComesToTheWindowBelowACover) {
    InputLog log(*desktop, *window);
    XTestWindow cover(*desktop, "cover", {0, 0, 900, 900});
    cover.raise();
    ASSERT_TRUE(input->activate(window->id()));
    const auto clicked = input->click(inside(30, 40));
    ASSERT_TRUE(clicked) << clicked.error().message;
    EXPECT_TRUE(log.await({"press 30,40", "release 30,40"}));
}

TEST_P(XSyntheticInputTest, ADragComesFromEndToEnd) {
    InputLog log(*desktop, *window);
    ASSERT_TRUE(input->activate(window->id()));
    ASSERT_TRUE(input->drag(inside(100, 600), inside(120, 100), std::chrono::milliseconds(64)));
    EXPECT_TRUE(log.await({"press 100,600", "move 105,475", "move 110,350", "move 115,225",
                           "move 120,100", "release 120,100"}))
        << testing::PrintToString(log.lines());
}

TEST_P(XSyntheticInputTest, TextAndKeysGoToTheActivatedWindow) {
    InputLog log(*desktop, *window);
    const XTestWindow other(*desktop, "typed into before", {400, 0, 300, 300});
    ASSERT_TRUE(input->activate(other.id()));
    ASSERT_TRUE(input->activate(window->id()));
    ASSERT_TRUE(input->type("aB\n"));
    ASSERT_TRUE(input->key("z", {"ctrl", "shift"}));
    constexpr std::uint32_t kShift = 0xffe1;
    constexpr std::uint32_t kControl = 0xffe3;
    EXPECT_TRUE(log.await({key('a') + " state 0", key(kShift) + " state 0", key('B') + " state 1",
                           key(0xff0d) + " state 0", key(kControl) + " state 0",
                           key(kShift) + " state 4", key('z') + " state 5"}))
        << testing::PrintToString(log.lines());
}

TEST_P(XSyntheticInputTest, ACharacterThatNoKeyHasIsLentOne) {
    InputLog log(*desktop, *window);
    constexpr std::uint32_t kWord = 0x01005b57;  // 字
    ASSERT_EQ(key(kWord), "no key");
    ASSERT_TRUE(input->activate(window->id()));
    // The key has the character for a moment only: typed until it was looked up in that moment.
    std::jthread typist([&](const std::stop_token& stop) {
        while (!stop.stop_requested()) EXPECT_TRUE(input->type("字"));
    });
    std::string lent = "no key";
    EXPECT_TRUE(desktop->await([&] { return (lent = key(kWord)) != "no key"; }));
    EXPECT_TRUE(desktop->await([&] {
        const auto lines = log.lines();
        return std::ranges::count(lines, lent + " state 0") > 0;
    }));
    typist.request_stop();
    typist.join();
    EXPECT_EQ(key(kWord), "no key") << "it is given back";
}

TEST_P(XSyntheticInputTest, WhatCannotBeDoneIsSaid) {
    EXPECT_EQ(input->activate(4'000'000'000).error().message, "window 4000000000 is gone");
    ASSERT_TRUE(input->activate(window->id()));
    EXPECT_EQ(input->click(inside(-3000, 0)).error().message,
              "another window covers that place, or it lies outside the desktop");
    EXPECT_EQ(input->key("nokey", {}).error().message, "unknown key nokey");
    EXPECT_EQ(input->key("a", {"hyper"}).error().message, "unknown modifier hyper");
    desktop->kill();
    EXPECT_TRUE(desktop->await([&] { return !input->click({}).has_value(); }));
    EXPECT_EQ(input->type("a").error().message, "the display is gone");
}

INSTANTIATE_TEST_SUITE_P(Managers, XSyntheticInputTest,
                         testing::Values(XDesktop::Manager::none, XDesktop::Manager::openbox),
                         [](const auto& row) {
                             return row.param == XDesktop::Manager::none ? "none" : "openbox";
                         });

TEST(XSyntheticInputManaged, AMinimisedWindowIsBroughtBack) {
    const auto desktop = XDesktop::open(XDesktop::Manager::openbox);
    if (!desktop) GTEST_SKIP() << "Xvfb or openbox is not installed";
    XTestWindow window(*desktop, "phone", {});
    window.minimise();
    const auto isShown = [&] {
        const XConnection& x = desktop->x();
        const auto state = xReply(xcb_get_window_attributes_reply(
            x.get(), xcb_get_window_attributes(x.get(), window.id()), nullptr));
        return state->map_state == XCB_MAP_STATE_VIEWABLE;
    };
    ASSERT_TRUE(desktop->await([&] { return !isShown(); }));
    const auto input = XSyntheticInput::open();
    ASSERT_TRUE((*input)->activate(window.id()));
    EXPECT_TRUE(isShown());
}

TEST(XSyntheticInputAbsent, WithoutADisplayTheErrorSaysSo) {
    const EnvironmentVariable display("DISPLAY", std::nullopt);
    const EnvironmentVariable wayland("WAYLAND_DISPLAY", std::nullopt);
    EXPECT_EQ(XSyntheticInput::open().error().message,
              "there is no display to look for windows on (DISPLAY is not set)");
}

}  // namespace
}  // namespace tandrel
