#pragma once

#include <memory>
#include <string>

#include "platform/capture_devices.h"
#include "screen/airplay_server.h"

namespace tandrel {

// The mirrored picture as one more phone's screen beside those of the cable, so that everything
// that looks at a screen looks at it, too. It is there while its window delivers, cut to the
// phone's screen. Each time it appears it has another id, since it may be another phone's then.
//
// Only a window whose owner vouches for it is taken: actions on a real phone are judged by this
// picture, and a title is chosen by any web page.
class MirroredDevices final : public CaptureDevices {
 public:
    // Both outlive the object.
    MirroredDevices(CaptureDevices& cable, AirPlayServer& server);
    ~MirroredDevices() override;
    MirroredDevices(const MirroredDevices&) = delete;
    MirroredDevices& operator=(const MirroredDevices&) = delete;

    void allowScreenCaptureDevices() override { cable_.allowScreenCaptureDevices(); }
    // The mirrored one comes last.
    std::vector<CaptureDeviceInfo> devices() override;
    void setOnDevicesChanged(std::function<void()> changed) override;
    void requestAccess(std::function<void(bool granted)> answer) override {
        cable_.requestAccess(std::move(answer));
    }
    Result<std::unique_ptr<CaptureSession>> open(const CaptureDeviceInfo& device,
                                                 FrameSink sink) override;

 private:
    struct Mirrored {
        std::weak_ptr<WindowCapture> capture;
        int appearance = 0;  // of that capture's picture
        int number = 0;      // among all that ever were
    };
    std::shared_ptr<WindowCapture> delivering() const;

    CaptureDevices& cable_;
    AirPlayServer& server_;
    Mutex mutex_;
    Mirrored mirrored_ OWNED_BY(mutex_);
};

}  // namespace tandrel
