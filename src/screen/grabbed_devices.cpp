#include "screen/grabbed_devices.h"

#include <algorithm>
#include <optional>
#include <utility>

#include "base/environment.h"
#include "screen/aspect.h"
#include "screen/content_memory.h"

namespace tandrel {

// Frames come on one thread, the grabber's.
class GrabbedDevices::Session final : public CaptureSession {
 public:
    Session(Clock& clock, FrameSink sink, std::function<void()> cameBack)
        : clock_(clock),
          sink_(std::move(sink)),
          cameBack_(std::move(cameBack)),
          aspectHint_(parseAspect(environment("TANDREL_SCREEN_ASPECT"))) {}

    void take(const PixelBuffer& frame) {
        const ContentRect found = withPixels(frame, [&](const Pixels& pixels) {
            return detectContent(pixels, aspectHint_, content_.orientation());
        });
        const TimePoint now = clock_.now();
        if (found.method == "blank") {
            if (!blackSince_) blackSince_ = now;
        } else if (blackSince_) {
            isOver_ = isOver_ || now - *blackSince_ >= kLongestBlack;
            blackSince_.reset();
            if (isOver_) cameBack_();
        }
        if (isOver_) return;
        sink_(cropped(frame, content_.settle(found, {frame.width(), frame.height()}).rect));
    }

    // Ends the frames before the rest goes.
    void hold(std::unique_ptr<CaptureSession> session) { session_ = std::move(session); }

 private:
    Clock& clock_;
    const FrameSink sink_;
    const std::function<void()> cameBack_;
    const std::optional<double> aspectHint_;
    ContentMemory content_;
    std::optional<TimePoint> blackSince_;
    bool isOver_ = false;
    std::unique_ptr<CaptureSession> session_;
};

std::string GrabbedDevices::shownId(const std::string& id) const {
    const auto returns = returns_.find(id);
    return returns == returns_.end() ? id : id + "." + std::to_string(returns->second);
}

std::vector<CaptureDeviceInfo> GrabbedDevices::devices() {
    auto all = devices_.devices();
    MutexLock lock(mutex_);
    std::erase_if(returns_, [&](const auto& entry) {
        return std::ranges::find(all, entry.first, &CaptureDeviceInfo::id) == all.end();
    });
    for (CaptureDeviceInfo& device : all) {
        if (device.link == CaptureLink::grabber) device.id = shownId(device.id);
    }
    return all;
}

void GrabbedDevices::setOnDevicesChanged(std::function<void()> changed) {
    {
        MutexLock lock(mutex_);
        changed_ = changed;
    }
    devices_.setOnDevicesChanged(std::move(changed));
}

void GrabbedDevices::cameBack(const std::string& id) {
    MutexLock lock(mutex_);
    ++returns_[id];
    if (changed_) changed_();
}

Result<std::unique_ptr<CaptureSession>> GrabbedDevices::open(const CaptureDeviceInfo& device,
                                                             FrameSink sink) {
    if (device.link != CaptureLink::grabber) return devices_.open(device, std::move(sink));
    const auto all = devices_.devices();
    CaptureDeviceInfo own;
    {
        MutexLock lock(mutex_);
        for (const CaptureDeviceInfo& candidate : all) {
            if (shownId(candidate.id) == device.id) own = candidate;
        }
    }
    if (own.id.empty()) return fail("the grabber was unplugged");
    auto session =
        std::make_unique<Session>(clock_, std::move(sink), [this, id = own.id] { cameBack(id); });
    auto frames = TRY(devices_.open(
        own, [taker = session.get()](const PixelBuffer& frame) { taker->take(frame); }));
    session->hold(std::move(frames));
    return session;
}

}  // namespace tandrel
