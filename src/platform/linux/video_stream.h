#pragma once

#include <functional>
#include <memory>
#include <string>
#include <thread>

#include "base/clock.h"
#include "base/file_descriptor.h"
#include "platform/capture_devices.h"
#include "platform/linux/video_device.h"

namespace tandrel {

// One running capture of a grabber: its thread "grabber" waits for frames and hands them on. It
// ends by itself when the grabber fails, or when frames stay out after there were some: a picture
// that is no longer live is worse than none.
class VideoStream final : public CaptureSession {
 public:
    struct Options {
        std::string path;
        FrameSink sink;
        // Told once, on the thread, when there will be no more frames though nobody ended it.
        std::function<void(std::string why)> ended;
    };
    static constexpr Duration kLongestSilence = std::chrono::seconds(5);
    static constexpr int kMostDamaged = 90;  // in a row

    static Result<std::unique_ptr<CaptureSession>> open(VideoCalls& calls, Options options,
                                                        Clock& clock);
    ~VideoStream() override;
    VideoStream(const VideoStream&) = delete;
    VideoStream& operator=(const VideoStream&) = delete;

 private:
    VideoStream(std::unique_ptr<VideoDevice> device, Options options, Clock& clock);
    void run(const std::stop_token& stop);
    Result<void> follow(const std::stop_token& stop);

    const std::unique_ptr<VideoDevice> device_;
    const Options options_;
    Clock& clock_;
    const FileDescriptor wake_;
    std::jthread thread_;
};

}  // namespace tandrel
