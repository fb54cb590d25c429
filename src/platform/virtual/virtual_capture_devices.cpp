#include "platform/virtual/virtual_capture_devices.h"

#include <optional>
#include <utility>

namespace tandrel {
namespace {

class VirtualCaptureSession final : public CaptureSession {
 public:
    VirtualCaptureSession(VirtualPhone& phone, FrameSink sink)
        : frames_(phone.watchFrames(VirtualPhone::View::cable, std::move(sink))) {}

 private:
    const PhoneSubscriptionPtr frames_;
};

}  // namespace

VirtualCaptureDevices::VirtualCaptureDevices(std::vector<VirtualPhone*> phones)
    : phones_(std::move(phones)) {
    for (VirtualPhone* phone : phones_) {
        const auto changed = [this, plugged = std::optional<bool>()](PhoneLinks links) mutable {
            const auto before = std::exchange(plugged, links.plugged);
            if (!before || *before == links.plugged) return;
            queue_.post([this] {
                queue_.assertCurrent();
                if (changed_) changed_();
            });
        };
        links_.push_back(phone->watchLinks(changed));
    }
}

std::vector<CaptureDeviceInfo> VirtualCaptureDevices::devices() {
    std::vector<CaptureDeviceInfo> devices;
    for (VirtualPhone* phone : phones_) {
        if (!phone->links().plugged) continue;
        devices.push_back(
            {.id = phone->traits().id, .name = phone->traits().name, .modelId = "iOS Device"});
    }
    return devices;
}

void VirtualCaptureDevices::setOnDevicesChanged(std::function<void()> changed) {
    queue_.sync([this, &changed] {
        queue_.assertCurrent();
        changed_ = std::move(changed);
    });
}

Result<std::unique_ptr<CaptureSession>> VirtualCaptureDevices::open(const CaptureDeviceInfo& device,
                                                                    FrameSink sink) {
    for (VirtualPhone* phone : phones_) {
        if (phone->traits().id != device.id || !phone->links().plugged) continue;
        return std::make_unique<VirtualCaptureSession>(*phone, std::move(sink));
    }
    return fail(device.name + " is not plugged in");
}

}  // namespace tandrel
