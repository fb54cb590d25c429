#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>

#include "base/clock.h"
#include "base/mutex.h"
#include "platform/capture_devices.h"

namespace tandrel {

// Grabbers as phones' screens: each picture is cut to the phone's screen inside it, upright or on
// its side. One that was black for kLongestBlack is another screen when it comes back, since it may
// be another phone's by then. Everything that is not a grabber passes through.
class GrabbedDevices final : public CaptureDevices {
 public:
    // Both outlive the object and its sessions.
    GrabbedDevices(CaptureDevices& devices, Clock& clock) : devices_(devices), clock_(clock) {}

    static constexpr Duration kLongestBlack = std::chrono::seconds(3);

    void allowScreenCaptureDevices() override { devices_.allowScreenCaptureDevices(); }
    std::vector<CaptureDeviceInfo> devices() override;
    void setOnDevicesChanged(std::function<void()> changed) override;
    void requestAccess(std::function<void(bool granted)> answer) override {
        devices_.requestAccess(std::move(answer));
    }
    Result<std::unique_ptr<CaptureSession>> open(const CaptureDeviceInfo& device,
                                                 FrameSink sink) override;

 private:
    class Session;
    std::string shownId(const std::string& id) const RUNS_ON(mutex_);
    void cameBack(const std::string& id);

    CaptureDevices& devices_;
    Clock& clock_;
    Mutex mutex_;
    std::map<std::string, int> returns_ OWNED_BY(mutex_);  // by the grabber's own id
    std::function<void()> changed_ OWNED_BY(mutex_);
};

}  // namespace tandrel
