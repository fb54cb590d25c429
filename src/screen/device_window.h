#pragma once

#include "platform/capture_devices.h"
#include "platform/windows.h"

namespace tandrel {

// One capture device's picture in the place of a window's, for those who serve windows.
class DeviceWindow final : public Windows {
 public:
    static constexpr std::uint32_t kId = 1;

    // `devices` outlives the object and every stream.
    DeviceWindow(CaptureDevices& devices, CaptureDeviceInfo device)
        : devices_(devices), device_(std::move(device)) {}

    Result<std::vector<WinInfo>> all() override;
    Result<std::unique_ptr<WindowStream>> open(std::uint32_t id, WindowEvents events) override;

 private:
    CaptureDevices& devices_;
    const CaptureDeviceInfo device_;
};

}  // namespace tandrel
