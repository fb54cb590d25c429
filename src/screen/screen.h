#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/mutex.h"
#include "base/pixel_buffer.h"
#include "base/result.h"
#include "base/serial_queue.h"
#include "platform/capture_devices.h"
#include "screen/picture_watch.h"
#include "screen/snapshot.h"

namespace tandrel {

// Why a device that opened without a sentence of its own gives no frames.
struct CaptureError {
    static Error cannotCapture(const std::string& name);
    static Error cannotReadFrames(const std::string& name);
};

// One phone's screen: captures from the moment it is opened and holds the newest frame, so that
// what the phone shows now is known at once. Only a reference to a frame is kept; everything that
// costs time happens on the thread of whoever asks. Public members may be called from any thread
// but the capture's own.
class Screen {
 public:
    // `devices` and `clock` outlive the screen. The error is the system's sentence or a
    // CaptureError.
    static Result<std::shared_ptr<Screen>> open(CaptureDevices& devices,
                                                const CaptureDeviceInfo& device, Clock& clock);
    ~Screen();
    Screen(const Screen&) = delete;
    Screen& operator=(const Screen&) = delete;

    const std::string& id() const { return id_; }
    const std::string& name() const { return name_; }
    CaptureLink link() const { return link_; }
    // Ends the capture: no frame arrives after it returned. The last frame stays.
    void stop();

    struct Latest {
        PixelBuffer frame;
        double ageSeconds = 0;  // since it arrived
    };
    // The newest frame with its age, read together. None before the first frame, as for all of the
    // following.
    std::optional<Latest> latest();
    std::optional<PixelBuffer> frame();
    std::optional<double> frameAge();  // seconds
    std::optional<Size> size();
    // The newest frame as an image file.
    std::optional<Bytes> snapshot(const SnapshotOptions& options);
    // The newest frame drawn to exactly `width` x `height` grey bytes, row by row.
    std::optional<std::vector<std::uint8_t>> thumbnail(int width, int height);

    // When the picture changed later than `since`, oldest first, in milliseconds since 1970.
    std::vector<double> changeTimes(double since) { return watch_.changeTimes(since); }

 private:
    struct Arrival {
        PixelBuffer frame;
        TimePoint time;
    };

    Screen(const CaptureDeviceInfo& device, Clock& clock);
    void deliver(PixelBuffer frame);
    void keepPending() RUNS_ON(queue_);

    const std::string id_;
    const std::string name_;
    const CaptureLink link_;
    Clock& clock_;
    PictureWatch watch_;
    Mutex mutex_;
    std::optional<Arrival> pending_ OWNED_BY(mutex_);
    std::unique_ptr<CaptureSession> session_ OWNED_BY(mutex_);
    std::optional<Arrival> latest_ OWNED_BY(queue_);
    SerialQueue queue_;
};

}  // namespace tandrel
