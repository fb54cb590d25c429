#include "platform/linux/image_capture_devices.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "platform/linux/image_player.h"

namespace tandrel {
namespace {

// What a phone's screen calls itself among the cameras, as far as anyone asks.
constexpr const char* kImagesModel = "iOS Device (images)";

// One path, one phone, whatever the folder the program was started in.
std::vector<std::filesystem::path> distinct(const std::vector<std::filesystem::path>& paths) {
    std::vector<std::filesystem::path> result;
    for (const auto& path : paths) {
        std::error_code error;
        auto full = std::filesystem::absolute(path, error).lexically_normal();
        if (!full.has_filename()) full = full.parent_path();
        if (!error && std::ranges::find(result, full) == result.end()) result.push_back(full);
    }
    return result;
}

ImageCaptureDevices::Options withDistinctPaths(ImageCaptureDevices::Options options) {
    options.paths = distinct(options.paths);
    return options;
}

}  // namespace

ImageCaptureDevices::ImageCaptureDevices(Options options, Clock& clock)
    : options_(withDistinctPaths(std::move(options))),
      clock_(clock),
      queue_("image-devices", clock) {
    queue_.post([this] {
        queue_.assertCurrent();
        known_ = devices();
        look();
    });
}

ImageCaptureDevices::~ImageCaptureDevices() { queue_.stop(); }

std::vector<std::filesystem::path> ImageCaptureDevices::parsePaths(std::string_view text) {
    std::vector<std::filesystem::path> result;
    while (!text.empty()) {
        const auto end = std::min(text.find(':'), text.size());
        if (end > 0) result.emplace_back(text.substr(0, end));
        text.remove_prefix(std::min(end + 1, text.size()));
    }
    return result;
}

std::vector<CaptureDeviceInfo> ImageCaptureDevices::devices() {
    std::vector<CaptureDeviceInfo> result;
    for (const auto& path : options_.paths) {
        std::error_code error;
        if (!std::filesystem::exists(path, error)) continue;
        const bool isFolder = std::filesystem::is_directory(path, error);
        const auto name = isFolder ? path.filename() : path.stem();
        result.push_back({"image:" + path.string(), name.string(), kImagesModel});
    }
    return result;
}

void ImageCaptureDevices::setOnDevicesChanged(std::function<void()> changed) {
    queue_.sync([&] {
        queue_.assertCurrent();
        changed_ = std::move(changed);
    });
}

// Reading one's own files needs nobody's leave.
void ImageCaptureDevices::requestAccess(std::function<void(bool granted)> answer) { answer(true); }

void ImageCaptureDevices::look() {
    auto now = devices();
    if (now != known_) {
        known_ = std::move(now);
        if (changed_) changed_();
    }
    queue_.postAfter(kLookInterval, [this] {
        queue_.assertCurrent();
        look();
    });
}

Result<std::unique_ptr<CaptureSession>> ImageCaptureDevices::open(const CaptureDeviceInfo& device,
                                                                  FrameSink sink) {
    const auto path = std::ranges::find(options_.paths, device.id, [](const auto& candidate) {
        return "image:" + candidate.string();
    });
    if (path == options_.paths.end()) return fail("there is no image source " + device.id);
    return ImagePlayer::open({.path = *path,
                              .load = options_.load,
                              .interval = seconds(1.0 / options_.framesPerSecond),
                              .sink = std::move(sink)},
                             clock_);
}

}  // namespace tandrel
