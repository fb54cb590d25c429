#include "platform/linux/video_device.h"

#include <algorithm>
#include <cerrno>
#include <cmath>
#include <cstring>

#include <fmt/format.h>
#include <linux/videodev2.h>
#include <poll.h>

#include "base/unicode.h"
#include "platform/linux/video_offer.h"

namespace tandrel {
namespace {

constexpr std::uint32_t kBuffers = 4;
constexpr std::uint32_t kMostBuffers = 32;
constexpr const char* kGone = "it was unplugged";

// A text of fixed length in which the end mark may be missing.
template <std::size_t N>
std::string textOf(const __u8 (&field)[N]) {
    const auto* first = reinterpret_cast<const char*>(field);
    std::string text;
    for (const std::string& sign : graphemes({first, ::strnlen(first, N)})) {
        text += static_cast<unsigned char>(sign.front()) < ' ' ? " " : sign;
    }
    return trimmed(text);
}

Error openError(const std::string& path, int error) {
    if (error == -EACCES || error == -EPERM) {
        return {
            fmt::format("your user may not read {}: run `sudo usermod -aG video $USER`, then "
                        "log in again",
                        path)};
    }
    if (error == -EBUSY) return {path + " is in use by another program: close it"};
    return {fmt::format("can't open {}: {}", path, std::strerror(-error))};
}

std::unexpected<Error> endOfFrames(int error) {
    if (error == -ENODEV) return fail(kGone);
    return fail(std::string("it failed: ") + std::strerror(-error));
}

VideoForm::Colours coloursOf(const v4l2_pix_format& pix) {
    const bool isNamed = pix.ycbcr_enc != V4L2_YCBCR_ENC_DEFAULT;
    const bool is709 =
        isNamed ? pix.ycbcr_enc == V4L2_YCBCR_ENC_709 : pix.colorspace == V4L2_COLORSPACE_REC709;
    return is709 ? VideoForm::Colours::bt709 : VideoForm::Colours::bt601;
}

v4l2_buffer emptyBuffer(std::uint32_t index = 0) {
    v4l2_buffer buffer{};
    buffer.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    buffer.memory = V4L2_MEMORY_MMAP;
    buffer.index = index;
    return buffer;
}

}  // namespace

Result<VideoIdentity> identifyVideo(VideoCalls& calls, const std::string& path) {
    const int device = calls.open(path);
    if (device < 0) return std::unexpected(openError(path, device));
    v4l2_capability capability{};
    const int asked = calls.ioctl(device, VIDIOC_QUERYCAP, &capability);
    calls.close(device);
    if (asked < 0) return fail(path + " is no video device");
    const bool isOwn = (capability.capabilities & V4L2_CAP_DEVICE_CAPS) != 0;
    const std::uint32_t can = isOwn ? capability.device_caps : capability.capabilities;
    constexpr std::uint32_t kNeeded = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    return VideoIdentity{textOf(capability.card), (can & kNeeded) == kNeeded};
}

Result<std::unique_ptr<VideoDevice>> VideoDevice::open(VideoCalls& calls, const std::string& path) {
    const int opened = calls.open(path);
    if (opened < 0) return std::unexpected(openError(path, opened));
    std::unique_ptr<VideoDevice> device(new VideoDevice(calls, opened));
    TRY_VOID(device->agreeOnForm(path));
    TRY_VOID(device->shareMemory());
    TRY_VOID(device->begin(path));
    return device;
}

VideoDevice::~VideoDevice() {
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    calls_.ioctl(device_, VIDIOC_STREAMOFF, &type);
    for (const Memory& memory : memory_) calls_.unmap(memory.first, memory.length);
    calls_.close(device_);
}

Result<void> VideoDevice::agreeOnForm(const std::string& path) {
    const auto offers = offersOf(calls_, device_);
    const auto best = bestOffer(offers);
    if (!best) return fail(path + " offers no video in YUYV, NV12, BGR or MJPEG");
    v4l2_format format{};
    format.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    format.fmt.pix.width = static_cast<std::uint32_t>(best->width);
    format.fmt.pix.height = static_cast<std::uint32_t>(best->height);
    format.fmt.pix.pixelformat = pixelFormatOf(best->layout);
    format.fmt.pix.field = V4L2_FIELD_NONE;
    if (const int set = calls_.ioctl(device_, VIDIOC_S_FMT, &format); set < 0) {
        return std::unexpected(openError(path, set));
    }
    // The device may have settled for something else.
    const v4l2_pix_format& pix = format.fmt.pix;
    const auto layout = layoutOf(pix.pixelformat);
    const bool isPicture = pix.width > 0 && pix.height > 0 &&
                           std::max(pix.width, pix.height) <= VideoForm::kLargestSide;
    if (!layout || !isPicture) return fail(path + " does not deliver what it offers");
    form_ = VideoForm{.layout = *layout,
                      .width = static_cast<int>(pix.width),
                      .height = static_cast<int>(pix.height),
                      .colours = coloursOf(pix)}
                .withStride(pix.bytesperline);
    v4l2_streamparm pace{};
    pace.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    pace.parm.capture.timeperframe = {
        1000, static_cast<std::uint32_t>(std::lround(best->framesPerSecond * 1000))};
    calls_.ioctl(device_, VIDIOC_S_PARM, &pace);  // where it can't be chosen, any pace will do
    return {};
}

Result<void> VideoDevice::shareMemory() {
    v4l2_requestbuffers request{};
    request.count = kBuffers;
    request.type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    request.memory = V4L2_MEMORY_MMAP;
    if (const int got = calls_.ioctl(device_, VIDIOC_REQBUFS, &request); got < 0) {
        return endOfFrames(got);
    }
    if (request.count < 1 || request.count > kMostBuffers) {
        return fail(fmt::format("it gave {} buffers", request.count));
    }
    for (std::uint32_t i = 0; i < request.count; ++i) {
        v4l2_buffer buffer = emptyBuffer(i);
        if (const int got = calls_.ioctl(device_, VIDIOC_QUERYBUF, &buffer); got < 0) {
            return endOfFrames(got);
        }
        auto* memory = buffer.length > 0
                           ? calls_.map(device_, buffer.length, std::int64_t{buffer.m.offset})
                           : nullptr;
        if (memory == nullptr) return fail("it shares no memory for its frames");
        memory_.push_back({memory, buffer.length});
    }
    return {};
}

Result<void> VideoDevice::begin(const std::string& path) {
    for (std::uint32_t i = 0; i < memory_.size(); ++i) TRY_VOID(giveBack(i));
    // Cards that follow the signal tell when it has another size; others don't know this event.
    v4l2_event_subscription change{};
    change.type = V4L2_EVENT_SOURCE_CHANGE;
    calls_.ioctl(device_, VIDIOC_SUBSCRIBE_EVENT, &change);
    int type = V4L2_BUF_TYPE_VIDEO_CAPTURE;
    if (const int begun = calls_.ioctl(device_, VIDIOC_STREAMON, &type); begun < 0) {
        return std::unexpected(openError(path, begun));
    }
    return {};
}

Result<void> VideoDevice::giveBack(std::uint32_t index) {
    v4l2_buffer buffer = emptyBuffer(index);
    if (const int given = calls_.ioctl(device_, VIDIOC_QBUF, &buffer); given < 0) {
        return endOfFrames(given);
    }
    return {};
}

bool VideoDevice::hasOtherSignal() {
    v4l2_event event{};
    return calls_.ioctl(device_, VIDIOC_DQEVENT, &event) == 0 &&
           event.type == V4L2_EVENT_SOURCE_CHANGE;
}

Result<std::optional<VideoDevice::Filled>> VideoDevice::next() {
    v4l2_buffer buffer = emptyBuffer();
    const int taken = calls_.ioctl(device_, VIDIOC_DQBUF, &buffer);
    if (taken == -EAGAIN) return std::nullopt;
    if (taken < 0) return endOfFrames(taken);
    if (buffer.index >= memory_.size()) return fail("it names a buffer that it never gave");
    return Filled{buffer.index,
                  std::min<std::size_t>(buffer.bytesused, memory_[buffer.index].length),
                  (buffer.flags & V4L2_BUF_FLAG_ERROR) != 0};
}

Result<std::optional<VideoDevice::Taken>> VideoDevice::take(int wake, Duration longest) {
    const int events = calls_.poll(device_, wake, longest);
    if ((events & POLLPRI) != 0 && hasOtherSignal()) return fail("its signal has changed");
    if ((events & (POLLIN | POLLERR | POLLHUP)) == 0) return std::nullopt;
    std::optional<Filled> newest = TRY(next());
    if (!newest) {
        if ((events & POLLHUP) != 0) return fail(kGone);
        if ((events & POLLERR) != 0) return fail("it stopped");
        return std::nullopt;
    }
    for (std::size_t i = 1; i < memory_.size(); ++i) {
        const auto later = TRY(next());
        if (!later) break;
        TRY_VOID(giveBack(newest->index));
        newest = later;
    }
    Taken taken;
    if (newest->isDamaged) {
        taken.damage = "the grabber marked a frame as damaged";
    } else if (auto picture = pictureOf(form_, {memory_[newest->index].first, newest->bytes})) {
        taken.picture = *std::move(picture);
    } else {
        taken.damage = picture.error().message;
    }
    TRY_VOID(giveBack(newest->index));
    return taken;
}

}  // namespace tandrel
