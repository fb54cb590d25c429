#pragma once

#include <map>
#include <memory>
#include <mutex>
#include <thread>
#include <vector>

#include "platform/capture_devices.h"

namespace tandrel {

// Phones' screens that show the same few frames in turn, so that nothing but the product works.
// Every frame is delivered by reference.
class PredrawnCapture final : public CaptureDevices {
 public:
    struct Phone {
        CaptureDeviceInfo device;
        std::vector<PixelBuffer> frames;
    };
    PredrawnCapture(std::vector<Phone> phones, double framesPerSecond);

    void allowScreenCaptureDevices() override {}
    std::vector<CaptureDeviceInfo> devices() override;
    void setOnDevicesChanged(std::function<void()>) override {}
    void requestAccess(std::function<void(bool granted)> answer) override { answer(true); }
    Result<std::unique_ptr<CaptureSession>> open(const CaptureDeviceInfo& device,
                                                 FrameSink sink) override;

 private:
    const std::vector<Phone> phones_;
    const double framesPerSecond_;
};

}  // namespace tandrel
