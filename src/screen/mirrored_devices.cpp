#include "screen/mirrored_devices.h"

#include <utility>

#include "screen/window_search.h"

namespace tandrel {
namespace {

constexpr const char* kModel = "iOS AirPlay";

class MirroredSession final : public CaptureSession {
 public:
    // Only for as long as the picture is there without a break: after one it may be another
    // phone's, which is then another screen.
    MirroredSession(std::shared_ptr<WindowCapture> capture, int appearance, FrameSink sink)
        : capture_(std::move(capture)) {
        const auto take = [capture = capture_.get(), appearance,
                           sink = std::move(sink)](const PixelBuffer& frame) {
            if (capture->appearances() == appearance) sink(capture->phoneScreen(frame));
        };
        capture_->setListener(take);
    }
    ~MirroredSession() override { capture_->setListener({}); }
    MirroredSession(const MirroredSession&) = delete;
    MirroredSession& operator=(const MirroredSession&) = delete;

 private:
    const std::shared_ptr<WindowCapture> capture_;
};

}  // namespace

MirroredDevices::MirroredDevices(CaptureDevices& cable, AirPlayServer& server)
    : cable_(cable), server_(server) {}

MirroredDevices::~MirroredDevices() { server_.setOnPictureChanged({}); }

std::shared_ptr<WindowCapture> MirroredDevices::delivering() const {
    auto capture = server_.current();
    if (!capture || capture->info().score < kTrustedScore || !capture->latest()) return nullptr;
    return capture;
}

std::vector<CaptureDeviceInfo> MirroredDevices::devices() {
    std::vector<CaptureDeviceInfo> all = cable_.devices();
    const auto capture = delivering();
    if (!capture) return all;
    MutexLock lock(mutex_);
    const int appearance = capture->appearances();
    if (mirrored_.capture.lock() != capture || mirrored_.appearance != appearance) {
        mirrored_ = {capture, appearance, mirrored_.number + 1};
    }
    all.push_back({.id = "airplay-" + std::to_string(mirrored_.number),
                   .name = "iPhone over AirPlay",
                   .modelId = kModel,
                   .link = CaptureLink::airplay});
    return all;
}

void MirroredDevices::setOnDevicesChanged(std::function<void()> changed) {
    server_.setOnPictureChanged(changed);
    cable_.setOnDevicesChanged(std::move(changed));
}

Result<std::unique_ptr<CaptureSession>> MirroredDevices::open(const CaptureDeviceInfo& device,
                                                              FrameSink sink) {
    if (device.link != CaptureLink::airplay) return cable_.open(device, std::move(sink));
    Mirrored mirrored;
    {
        MutexLock lock(mutex_);
        mirrored = mirrored_;
    }
    auto capture = mirrored.capture.lock();
    if (!capture) return fail("no frame yet from the AirPlay window");
    return std::make_unique<MirroredSession>(std::move(capture), mirrored.appearance,
                                             std::move(sink));
}

}  // namespace tandrel
