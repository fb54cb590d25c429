#include "screen/device_window.h"

#include <utility>

#include "screen/screen.h"

namespace tandrel {
namespace {

class DeviceStream final : public WindowStream {
 public:
    explicit DeviceStream(std::unique_ptr<CaptureSession> session) : session_(std::move(session)) {}

 private:
    const std::unique_ptr<CaptureSession> session_;
};

}  // namespace

Result<std::vector<WinInfo>> DeviceWindow::all() {
    return std::vector{WinInfo{.id = kId,
                               .owner = device_.modelId,
                               .title = device_.name,
                               .onScreen = true,
                               .isBare = true}};
}

Result<std::unique_ptr<WindowStream>> DeviceWindow::open(std::uint32_t id, WindowEvents events) {
    if (id != kId) return std::unexpected(windowIsGone(id));
    auto session = devices_.open(device_, std::move(events.frame));
    if (!session && !session.error().message.empty()) return std::unexpected(session.error());
    if (!session || !*session) return std::unexpected(CaptureError::cannotCapture(device_.name));
    return std::make_unique<DeviceStream>(*std::move(session));
}

}  // namespace tandrel
