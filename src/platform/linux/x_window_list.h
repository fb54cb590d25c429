#pragma once

#include <vector>

#include <sys/types.h>

#include "platform/linux/x_connection.h"
#include "platform/windows.h"

namespace tandrel {

// The windows of the applications on the display, in the window manager's order, or as they lie in
// the window tree where there is no window manager. Left out: the desktop, panels, menus and what
// else the manager does not manage, and the windows of the process `leftOut`.
std::vector<WinInfo> xWindowList(const XConnection& x, pid_t leftOut);

}  // namespace tandrel
