#include "platform/linux/display.h"

#include <cstdlib>
#include <string_view>

#include <xcb/xcb.h>

#include "base/environment.h"

namespace tandrel {
namespace {

xcb_atom_t atom(xcb_connection_t* connection, std::string_view name) {
    const auto cookie =
        xcb_intern_atom(connection, 0, static_cast<std::uint16_t>(name.size()), name.data());
    xcb_intern_atom_reply_t* reply = xcb_intern_atom_reply(connection, cookie, nullptr);
    const xcb_atom_t result = reply != nullptr ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
    std::free(reply);
    return result;
}

}  // namespace

bool prepareDisplay() {
    if (environment("QT_QPA_PLATFORM").value_or("") == "offscreen") return true;
    if (environment("DISPLAY").value_or("").empty()) return false;
    xcb_connection_t* connection = xcb_connect(nullptr, nullptr);
    const bool reachable = xcb_connection_has_error(connection) == 0;
    xcb_disconnect(connection);
    // X also serves a Wayland desktop, and without Qt's Wayland plugin it is the only way there.
    if (reachable) ::setenv("QT_QPA_PLATFORM", "xcb", 0);
    return reachable;
}

void showOnEveryDesktop(xcb_connection_t* connection, std::uint32_t window) {
    constexpr std::uint32_t kAllDesktops = 0xffffffff;
    const xcb_atom_t sticky = atom(connection, "_NET_WM_STATE_STICKY");
    xcb_change_property(connection, XCB_PROP_MODE_REPLACE, window,
                        atom(connection, "_NET_WM_DESKTOP"), XCB_ATOM_CARDINAL, 32, 1,
                        &kAllDesktops);
    xcb_change_property(connection, XCB_PROP_MODE_APPEND, window, atom(connection, "_NET_WM_STATE"),
                        XCB_ATOM_ATOM, 32, 1, &sticky);
    xcb_flush(connection);
}

}  // namespace tandrel
