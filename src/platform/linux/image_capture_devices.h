#pragma once

#include <filesystem>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "base/clock.h"
#include "base/serial_queue.h"
#include "platform/capture_devices.h"

namespace tandrel {

using LoadImage = std::function<Result<PixelBuffer>(const std::filesystem::path& file)>;

// Phones' screens from image files: each path stands for one phone, named after the file without
// its ending. A folder plays its PNG and JPEG files in the order of their names, over and over. The
// phone is plugged in while its path exists; a file that is written anew shows as the screen's next
// frame.
class ImageCaptureDevices final : public CaptureDevices {
 public:
    struct Options {
        std::vector<std::filesystem::path> paths;
        LoadImage load;  // any thread
        double framesPerSecond = 10;
    };
    explicit ImageCaptureDevices(Options options, Clock& clock = systemClock());
    ~ImageCaptureDevices() override;
    ImageCaptureDevices(const ImageCaptureDevices&) = delete;
    ImageCaptureDevices& operator=(const ImageCaptureDevices&) = delete;

    static constexpr Duration kLookInterval = std::chrono::milliseconds(500);

    // Paths separated by ":"; empty ones are left out.
    static std::vector<std::filesystem::path> parsePaths(std::string_view text);

    void allowScreenCaptureDevices() override {}
    std::vector<CaptureDeviceInfo> devices() override;
    void setOnDevicesChanged(std::function<void()> changed) override;
    void requestAccess(std::function<void(bool granted)> answer) override;
    // Fails when the first image cannot be loaded, naming the file.
    Result<std::unique_ptr<CaptureSession>> open(const CaptureDeviceInfo& device,
                                                 FrameSink sink) override;

 private:
    void look() RUNS_ON(queue_);

    const Options options_;
    Clock& clock_;
    std::function<void()> changed_ OWNED_BY(queue_);
    std::vector<CaptureDeviceInfo> known_ OWNED_BY(queue_);
    SerialQueue queue_;
};

}  // namespace tandrel
