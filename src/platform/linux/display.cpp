#include "platform/linux/display.h"

#include <cstdlib>

#include <xcb/xcb.h>

#include "base/environment.h"

namespace tandrel {

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

}  // namespace tandrel
