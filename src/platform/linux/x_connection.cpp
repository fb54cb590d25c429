#include "platform/linux/x_connection.h"

#include <cstring>

#include "base/environment.h"

namespace tandrel {
namespace {

constexpr std::uint32_t kLongestProperty = 64 * 1024;  // bytes

XReply<xcb_get_property_reply_t> property(xcb_connection_t* connection, xcb_window_t window,
                                          xcb_atom_t name) {
    return xReply(
        xcb_get_property_reply(connection,
                               xcb_get_property(connection, 0, window, name,
                                                XCB_GET_PROPERTY_TYPE_ANY, 0, kLongestProperty / 4),
                               nullptr));
}

}  // namespace

bool isWaylandDesktop() { return !environment("WAYLAND_DISPLAY").value_or("").empty(); }

Error noWindowsOnWayland() {
    return {
        "Tandrel cannot see the windows of a Wayland desktop: let it receive AirPlay itself "
        "(tandrel-app --set link airplay), or start your receiver with \"-vs ximagesink\"",
        503};
}

Result<std::unique_ptr<XConnection>> XConnection::open() {
    if (environment("DISPLAY").value_or("").empty()) {
        if (isWaylandDesktop()) return std::unexpected(noWindowsOnWayland());
        return fail("there is no display to look for windows on (DISPLAY is not set)", 503);
    }
    int number = 0;
    xcb_connection_t* connection = xcb_connect(nullptr, &number);
    const xcb_setup_t* setup =
        xcb_connection_has_error(connection) == 0 ? xcb_get_setup(connection) : nullptr;
    if (setup == nullptr) {
        xcb_disconnect(connection);
        return fail("can't reach the display " + environment("DISPLAY").value_or(""), 503);
    }
    auto screens = xcb_setup_roots_iterator(setup);
    for (int i = 0; i < number && screens.rem > 1; ++i) xcb_screen_next(&screens);
    return std::unique_ptr<XConnection>(new XConnection(connection, screens.data));
}

bool XConnection::has(xcb_extension_t& extension) const {
    const auto* data = xcb_get_extension_data(connection_, &extension);
    return data != nullptr && data->present != 0;
}

xcb_atom_t XConnection::atom(const char* name) const {
    const auto reply = xReply(xcb_intern_atom_reply(
        connection_,
        xcb_intern_atom(connection_, 1, static_cast<std::uint16_t>(std::strlen(name)), name),
        nullptr));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
}

std::string XConnection::text(xcb_window_t window, xcb_atom_t name) const {
    if (name == XCB_ATOM_NONE) return {};
    const auto reply = property(connection_, window, name);
    if (!reply || reply->format != 8) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

std::vector<std::uint32_t> XConnection::numbers(xcb_window_t window, xcb_atom_t name) const {
    if (name == XCB_ATOM_NONE) return {};
    const auto reply = property(connection_, window, name);
    if (!reply || reply->format != 32) return {};
    const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {first, first + xcb_get_property_value_length(reply.get()) / 4};
}

void XConnection::sync() const {
    const auto reply =
        xReply(xcb_get_input_focus_reply(connection_, xcb_get_input_focus(connection_), nullptr));
}

}  // namespace tandrel
