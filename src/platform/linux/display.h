#pragma once

#include <cstdint>

struct xcb_connection_t;

namespace tandrel {

// Whether this process can open windows. Asks the display server instead of trusting a variable,
// since Qt ends the process when it cannot connect. Call before Qt is started.
bool prepareDisplay();

// Asks the window manager to show a window, not mapped yet, on every desktop (EWMH: sticky, and
// _NET_WM_DESKTOP with all bits set).
void showOnEveryDesktop(xcb_connection_t* connection, std::uint32_t window);

}  // namespace tandrel
