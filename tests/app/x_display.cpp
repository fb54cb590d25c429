#include "app/x_display.h"

#include <xcb/xtest.h>

#include "platform/linux/x_window_list.h"

namespace tandrel {

std::optional<XDisplay::Window> XDisplay::find(const std::string& title) const {
    constexpr pid_t kNobody = -1;
    for (const WinInfo& window : xWindowList(x_, kNobody)) {
        if (!window.onScreen || window.title != title) continue;
        return Window{window.id, int(window.frame.x), int(window.frame.y), int(window.frame.width),
                      int(window.frame.height)};
    }
    return std::nullopt;
}

void XDisplay::focus(const Window& window) const {
    xcb_set_input_focus(x_.get(), XCB_INPUT_FOCUS_PARENT, window.id, XCB_CURRENT_TIME);
    x_.sync();
}

void XDisplay::close(const Window& window) const {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window.id;
    event.type = x_.atom("WM_PROTOCOLS");
    event.data.data32[0] = x_.atom("WM_DELETE_WINDOW");
    xcb_send_event(x_.get(), 0, window.id, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&event));
    x_.sync();
}

bool XDisplay::hasPopup() const {
    const auto tree =
        xReply(xcb_query_tree_reply(x_.get(), xcb_query_tree(x_.get(), x_.root()), nullptr));
    for (int i = 0; tree && i < xcb_query_tree_children_length(tree.get()); ++i) {
        const std::uint32_t id = xcb_query_tree_children(tree.get())[i];
        const auto state = xReply(xcb_get_window_attributes_reply(
            x_.get(), xcb_get_window_attributes(x_.get(), id), nullptr));
        if (state && state->override_redirect && state->map_state == XCB_MAP_STATE_VIEWABLE) {
            return true;
        }
    }
    return false;
}

void XDisplay::fake(std::uint8_t type, std::uint8_t detail, int x, int y) const {
    xcb_test_fake_input(x_.get(), type, detail, XCB_CURRENT_TIME, x_.root(),
                        static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
}

void XDisplay::click(int x, int y) const {
    fake(XCB_MOTION_NOTIFY, 0, x, y);
    fake(XCB_BUTTON_PRESS, 1);
    fake(XCB_BUTTON_RELEASE, 1);
    x_.sync();
}

void XDisplay::press(Key key) const {
    fake(XCB_KEY_PRESS, static_cast<std::uint8_t>(key));
    fake(XCB_KEY_RELEASE, static_cast<std::uint8_t>(key));
    x_.sync();
}

}  // namespace tandrel
