#include "platform/linux/video_stream.h"

#include <utility>

#include <fmt/format.h>
#include <pthread.h>
#include <sys/eventfd.h>

#include "base/log.h"

namespace tandrel {
namespace {

constexpr Duration kLongestWait = std::chrono::seconds(1);

}  // namespace

Result<std::unique_ptr<CaptureSession>> VideoStream::open(VideoCalls& calls, Options options,
                                                          Clock& clock) {
    auto device = TRY(VideoDevice::open(calls, options.path));
    const VideoForm& form = device->form();
    log(fmt::format("grabber: {} delivers {} x {} in {}", options.path, form.width, form.height,
                    word(form.layout)));
    return std::unique_ptr<CaptureSession>(
        new VideoStream(std::move(device), std::move(options), clock));
}

VideoStream::VideoStream(std::unique_ptr<VideoDevice> device, Options options, Clock& clock)
    : device_(std::move(device)),
      options_(std::move(options)),
      clock_(clock),
      wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
      thread_([this](const std::stop_token& stop) { run(stop); }) {}

VideoStream::~VideoStream() {
    thread_.request_stop();
    ::eventfd_write(wake_.get(), 1);
    thread_.join();
}

void VideoStream::run(const std::stop_token& stop) {
    ::pthread_setname_np(::pthread_self(), "grabber");
    const auto followed = follow(stop);
    if (!followed && !stop.stop_requested()) options_.ended(followed.error().message);
}

Result<void> VideoStream::follow(const std::stop_token& stop) {
    TimePoint lastPicture = clock_.now();
    bool hadPicture = false;
    int damaged = 0;
    while (!stop.stop_requested()) {
        auto taken = TRY(device_->take(wake_.get(), kLongestWait));
        if (stop.stop_requested()) break;
        if (taken && taken->picture) {
            lastPicture = clock_.now();
            hadPicture = true;
            damaged = 0;
            options_.sink(std::move(taken->picture));
        } else if (taken && ++damaged >= kMostDamaged) {
            return fail(taken->damage);
        }
        if (hadPicture && clock_.now() - lastPicture > kLongestSilence) {
            return fail("it sends no picture any more");
        }
    }
    return {};
}

}  // namespace tandrel
