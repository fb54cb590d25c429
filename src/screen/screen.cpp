#include "screen/screen.h"

#include <utility>

namespace tandrel {

Error CaptureError::cannotCapture(const std::string& name) { return {"cannot capture " + name}; }

Error CaptureError::cannotReadFrames(const std::string& name) {
    return {"cannot read frames from " + name};
}

Result<std::shared_ptr<Screen>> Screen::open(CaptureDevices& devices,
                                             const CaptureDeviceInfo& device, Clock& clock) {
    std::shared_ptr<Screen> screen(new Screen(device, clock));
    auto session = devices.open(
        device, [self = screen.get()](PixelBuffer frame) { self->deliver(std::move(frame)); });
    if (!session && session.error().message.empty()) {
        return std::unexpected(CaptureError::cannotCapture(device.name));
    }
    if (!session) return std::unexpected(session.error());
    if (!*session) return std::unexpected(CaptureError::cannotReadFrames(device.name));
    MutexLock lock(screen->mutex_);
    screen->session_ = *std::move(session);
    return screen;
}

Screen::Screen(const CaptureDeviceInfo& device, Clock& clock)
    : id_(device.id),
      name_(device.name),
      link_(device.link),
      clock_(clock),
      watch_(device.id),
      queue_("pocketlink.capture." + device.id) {}

Screen::~Screen() { stop(); }

void Screen::stop() {
    std::unique_ptr<CaptureSession> ended;
    {
        MutexLock lock(mutex_);
        ended = std::move(session_);
    }
    // Ending a session waits for its callback, which takes the mutex.
    ended.reset();
}

// Runs on the capture's thread. A frame that comes while one still waits for the queue takes its
// place, so frames never pile up however busy the queue is.
void Screen::deliver(PixelBuffer frame) {
    if (!frame) return;
    std::optional<Arrival> arrival = Arrival{std::move(frame), clock_.now()};
    watch_.observe(arrival->frame, clock_.wallNow());
    bool isPosted = false;
    {
        MutexLock lock(mutex_);
        std::swap(pending_, arrival);
        isPosted = arrival.has_value();
    }
    if (isPosted) return;
    queue_.post([this] {
        queue_.assertCurrent();
        keepPending();
    });
}

void Screen::keepPending() {
    std::optional<Arrival> arrival;
    {
        MutexLock lock(mutex_);
        std::swap(pending_, arrival);
    }
    latest_ = std::move(arrival);
}

std::optional<Screen::Latest> Screen::latest() {
    const std::optional<Arrival> arrival = queue_.sync([this] {
        queue_.assertCurrent();
        return latest_;
    });
    if (!arrival) return std::nullopt;
    return Latest{arrival->frame, toSeconds(clock_.now() - arrival->time)};
}

std::optional<PixelBuffer> Screen::frame() {
    const auto now = latest();
    return now ? std::optional(now->frame) : std::nullopt;
}

std::optional<double> Screen::frameAge() {
    const auto now = latest();
    return now ? std::optional(now->ageSeconds) : std::nullopt;
}

std::optional<Size> Screen::size() {
    const auto now = frame();
    return now ? std::optional(Size{now->width(), now->height()}) : std::nullopt;
}

std::optional<Bytes> Screen::snapshot(const SnapshotOptions& options) {
    const auto now = frame();
    return now ? encodeSnapshot(*now, options) : std::nullopt;
}

std::optional<std::vector<std::uint8_t>> Screen::thumbnail(int width, int height) {
    const auto now = frame();
    return now ? thumbnailOf(*now, width, height) : std::nullopt;
}

}  // namespace tandrel
