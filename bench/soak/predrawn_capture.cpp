#include "predrawn_capture.h"

#include "base/clock.h"

namespace tandrel {
namespace {

class Player final : public CaptureSession {
 public:
    Player(std::vector<PixelBuffer> frames, double framesPerSecond, FrameSink sink)
        : thread_([=](const std::stop_token& stop) {
              const Duration interval = seconds(1 / framesPerSecond);
              TimePoint next = systemClock().now();
              for (std::size_t i = 0; systemClock().sleepUntil(next, stop); ++i, next += interval) {
                  sink(frames[i % frames.size()]);
              }
          }) {}

 private:
    std::jthread thread_;
};

}  // namespace

PredrawnCapture::PredrawnCapture(std::vector<Phone> phones, double framesPerSecond)
    : phones_(std::move(phones)), framesPerSecond_(framesPerSecond) {}

std::vector<CaptureDeviceInfo> PredrawnCapture::devices() {
    std::vector<CaptureDeviceInfo> devices;
    for (const Phone& phone : phones_) devices.push_back(phone.device);
    return devices;
}

Result<std::unique_ptr<CaptureSession>> PredrawnCapture::open(const CaptureDeviceInfo& device,
                                                              FrameSink sink) {
    for (const Phone& phone : phones_) {
        if (phone.device.id != device.id) continue;
        return std::make_unique<Player>(phone.frames, framesPerSecond_, std::move(sink));
    }
    return fail("no phone " + device.id);
}

}  // namespace tandrel
