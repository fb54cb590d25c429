#pragma once

#include <memory>
#include <mutex>

#include <unistd.h>

#include "platform/linux/x_connection.h"
#include "platform/windows.h"

namespace tandrel {

// The windows of an X display, those of a Wayland desktop's X programs included. The display is
// looked for at each call, so that one that comes or goes later is no trouble.
class XWindows final : public Windows {
 public:
    // Windows of the process `leftOut`, this one, are none of ours to look at.
    explicit XWindows(pid_t leftOut = ::getpid()) : leftOut_(leftOut) {}

    Result<std::vector<WinInfo>> all() override;
    Result<std::unique_ptr<WindowStream>> open(std::uint32_t id, WindowEvents events) override;

 private:
    const pid_t leftOut_;
    std::mutex mutex_;  // held while the windows are listed
    std::unique_ptr<XConnection> connection_;
};

}  // namespace tandrel
