#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/capture_devices.h"
#include "platform/virtual/virtual_phone.h"

namespace tandrel {

// Each virtual phone's screen as a capture device, there while the phone is plugged in. The phones
// outlive this and every session.
class VirtualCaptureDevices final : public CaptureDevices {
 public:
    explicit VirtualCaptureDevices(std::vector<VirtualPhone*> phones);

    void allowScreenCaptureDevices() override {}
    std::vector<CaptureDeviceInfo> devices() override;
    void setOnDevicesChanged(std::function<void()> changed) override;
    void requestAccess(std::function<void(bool granted)> answer) override { answer(true); }
    Result<std::unique_ptr<CaptureSession>> open(const CaptureDeviceInfo& device,
                                                 FrameSink sink) override;

 private:
    const std::vector<VirtualPhone*> phones_;
    std::function<void()> changed_ OWNED_BY(queue_);
    SerialQueue queue_{"tandrel.virtual.capture"};
    std::vector<PhoneSubscriptionPtr> links_;  // goes first: what it posts needs the queue
};

}  // namespace tandrel
