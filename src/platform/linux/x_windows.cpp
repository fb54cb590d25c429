#include "platform/linux/x_windows.h"

#include "platform/linux/x_window_list.h"
#include "platform/linux/x_window_stream.h"

namespace tandrel {

Result<std::vector<WinInfo>> XWindows::all() {
    std::lock_guard lock(mutex_);
    if (connection_ && connection_->isBroken()) connection_.reset();
    if (!connection_) connection_ = TRY(XConnection::open());
    std::vector<WinInfo> windows = xWindowList(*connection_, leftOut_);
    if (connection_->isBroken()) {
        connection_.reset();
        return fail("the display that shows the windows is gone", 503);
    }
    if (windows.empty() && isWaylandDesktop()) return std::unexpected(noWindowsOnWayland());
    return windows;
}

Result<std::unique_ptr<WindowStream>> XWindows::open(std::uint32_t id, WindowEvents events) {
    return XWindowStream::open(id, std::move(events));
}

}  // namespace tandrel
