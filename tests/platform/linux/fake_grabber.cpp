#include "platform/linux/fake_grabber.h"

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <cstring>
#include <utility>

#include <poll.h>

namespace tandrel {

FakeGrabbers::FakeGrabbers() : poked_(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC)) {}

void FakeGrabbers::poke() const { ::eventfd_write(poked_.get(), 1); }

void FakeGrabbers::plugIn(const std::string& path, GrabberAnswers answers,
                          const std::string& port) {
    {
        std::lock_guard lock(mutex_);
        devices_[path] = {.answers = std::move(answers),
                          .port = port,
                          .wake = FileDescriptor(::eventfd(0, EFD_NONBLOCK | EFD_CLOEXEC))};
    }
    poke();
}

void FakeGrabbers::unplug(const std::string& path) {
    with(path, [](Device& device) { device.works = device.isPlugged = false; });
    poke();
}

bool FakeGrabbers::awaitTaken(const std::string& path) {
    std::unique_lock lock(mutex_);
    return event_.wait_for(lock, std::chrono::seconds(10), [&] {
        const Device& device = devices_.at(path);
        return device.streams && device.frames.empty() &&
               device.free.size() == device.memory.size();
    });
}

int FakeGrabbers::openCount() {
    std::lock_guard lock(mutex_);
    return static_cast<int>(open_.size());
}

int FakeGrabbers::open(const std::string& path) {
    std::lock_guard lock(mutex_);
    const auto device = devices_.find(path);
    if (device == devices_.end() || !device->second.isPlugged) return -ENOENT;
    if (device->second.answers.openError != 0) return -device->second.answers.openError;
    open_[++next_] = path;
    return next_;
}

void FakeGrabbers::close(int device) {
    std::lock_guard lock(mutex_);
    const auto opened = open_.find(device);
    if (opened == open_.end()) return;
    devices_.at(opened->second).streams = false;
    open_.erase(opened);
}

std::uint32_t FakeGrabbers::frameBytes(const Device& device) {
    return 4 * device.width * device.height + 65536;
}

int FakeGrabbers::ioctl(int device, unsigned long request, void* value) {
    std::lock_guard lock(mutex_);
    Device& asked = devices_.at(open_.at(device));
    if (!asked.works) return -ENODEV;
    const int result = describe(asked, request, value);
    return result == -ENOTTY ? stream(asked, request, value) : result;
}

int FakeGrabbers::describe(Device& device, unsigned long request, void* value) {
    const auto& formats = device.answers.formats;
    const auto sizesOf = [&](std::uint32_t pixelFormat) {
        const auto format =
            std::ranges::find(formats, pixelFormat, &GrabberAnswers::Format::pixelFormat);
        return format == formats.end() ? std::vector<GrabberAnswers::Size>() : format->sizes;
    };
    if (request == VIDIOC_QUERYCAP) {
        auto& answer = *static_cast<v4l2_capability*>(value);
        std::memcpy(answer.card, device.answers.card.data(),
                    std::min(device.answers.card.size(), sizeof answer.card));
        // The whole device has video as well as metadata; this node has one of them.
        answer.capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_META_CAPTURE | V4L2_CAP_STREAMING |
                              V4L2_CAP_DEVICE_CAPS;
        answer.device_caps = device.answers.capabilities;
        return 0;
    }
    if (request == VIDIOC_ENUM_FMT) {
        auto& entry = *static_cast<v4l2_fmtdesc*>(value);
        if (entry.index >= formats.size()) return -EINVAL;
        entry.pixelformat = formats[entry.index].pixelFormat;
        return 0;
    }
    if (request == VIDIOC_ENUM_FRAMESIZES) {
        auto& entry = *static_cast<v4l2_frmsizeenum*>(value);
        const auto sizes = sizesOf(entry.pixel_format);
        if (entry.index >= sizes.size()) return -EINVAL;
        entry.type = V4L2_FRMSIZE_TYPE_DISCRETE;
        entry.discrete = {sizes[entry.index].width, sizes[entry.index].height};
        return 0;
    }
    if (request == VIDIOC_ENUM_FRAMEINTERVALS) {
        auto& entry = *static_cast<v4l2_frmivalenum*>(value);
        for (const auto& size : sizesOf(entry.pixel_format)) {
            if (size.width != entry.width || size.height != entry.height) continue;
            if (entry.index >= size.framesPerSecond.size()) return -EINVAL;
            entry.type = V4L2_FRMIVAL_TYPE_DISCRETE;
            entry.discrete = {1, size.framesPerSecond[entry.index]};
            return 0;
        }
        return -EINVAL;
    }
    return -ENOTTY;
}

int FakeGrabbers::stream(Device& device, unsigned long request, void* value) {
    if (request == VIDIOC_G_FMT || request == VIDIOC_S_FMT) {
        auto& pix = static_cast<v4l2_format*>(value)->fmt.pix;
        if (request == VIDIOC_G_FMT) pix.width = 1920, pix.height = 1080;
        if (device.answers.settlesFor != 0) pix.pixelformat = device.answers.settlesFor;
        device.pixelFormat = pix.pixelformat;
        device.width = pix.width;
        device.height = pix.height;
        pix.bytesperline = device.answers.bytesPerLine;
        return 0;
    }
    if (request == VIDIOC_REQBUFS) {
        static_cast<v4l2_requestbuffers*>(value)->count = device.answers.buffers;
        device.memory.assign(device.answers.buffers > 64 ? 0 : device.answers.buffers,
                             Bytes(frameBytes(device)));
        device.free.clear();
        return 0;
    }
    if (request == VIDIOC_QUERYBUF) {
        auto& buffer = *static_cast<v4l2_buffer*>(value);
        buffer.length = frameBytes(device);
        buffer.m.offset = buffer.index;
        return 0;
    }
    if (request == VIDIOC_QBUF) {
        device.free.push_back(static_cast<v4l2_buffer*>(value)->index);
        event_.notify_all();
        return 0;
    }
    if (request == VIDIOC_DQBUF) {
        if (device.frames.empty() || device.free.empty()) return -EAGAIN;
        auto& buffer = *static_cast<v4l2_buffer*>(value);
        const Frame frame = std::move(device.frames.front());
        device.frames.pop_front();
        buffer.index = device.free.front();
        device.free.pop_front();
        auto& memory = device.memory[buffer.index];
        std::copy_n(frame.bytes.begin(), std::min(frame.bytes.size(), memory.size()),
                    memory.begin());
        buffer.bytesused = static_cast<std::uint32_t>(frame.bytes.size());
        if (frame.isDamaged) buffer.flags |= V4L2_BUF_FLAG_ERROR;
        return 0;
    }
    if (request == VIDIOC_DQEVENT) {
        if (!std::exchange(device.hasOtherSignal, false)) return -ENOENT;
        static_cast<v4l2_event*>(value)->type = V4L2_EVENT_SOURCE_CHANGE;
        return 0;
    }
    if (request == VIDIOC_STREAMON) {
        if (device.answers.streamError != 0) return -device.answers.streamError;
        device.streams = true;
        event_.notify_all();
        return 0;
    }
    if (request == VIDIOC_STREAMOFF) return device.streams = false, 0;
    return -ENOTTY;
}

std::uint8_t* FakeGrabbers::map(int device, std::size_t length, std::int64_t offset) {
    std::lock_guard lock(mutex_);
    auto& memory = devices_.at(open_.at(device)).memory.at(static_cast<std::size_t>(offset));
    return memory.size() == length ? memory.data() : nullptr;
}

void FakeGrabbers::unmap(std::uint8_t*, std::size_t) {}

int FakeGrabbers::poll(int device, int wake, Duration) {
    for (;;) {
        int own = -1;
        {
            std::lock_guard lock(mutex_);
            eventfd_t ignored = 0;
            Device& asked = devices_.at(open_.at(device));
            own = asked.wake.get();
            ::eventfd_read(own, &ignored);
            if (std::exchange(asked.isWaitOver, false)) return 0;
            if (!asked.works) return POLLERR;
            if (asked.hasOtherSignal) return POLLPRI;
            if (!asked.frames.empty()) return POLLIN;
        }
        pollfd waits[] = {{own, POLLIN, 0}, {wake, POLLIN, 0}};
        ::poll(waits, 2, -1);
        if (waits[1].revents != 0) return 0;
    }
}

std::unique_ptr<VideoNodes> FakeGrabbers::nodes() {
    struct Nodes final : VideoNodes {
        explicit Nodes(FakeGrabbers& all) : grabbers(all) {}
        std::vector<VideoNode> list() override {
            std::lock_guard lock(grabbers.mutex_);
            std::vector<VideoNode> nodes;
            for (const auto& [path, device] : grabbers.devices_) {
                if (device.isPlugged) nodes.push_back({path, device.port, "video"});
            }
            return nodes;
        }
        void awaitChange(int wake, Duration) override {
            pollfd waits[] = {{wake, POLLIN, 0}, {grabbers.poked_.get(), POLLIN, 0}};
            ::poll(waits, 2, -1);
            eventfd_t ignored = 0;
            ::eventfd_read(grabbers.poked_.get(), &ignored);
        }
        FakeGrabbers& grabbers;
    };
    return std::make_unique<Nodes>(*this);
}

}  // namespace tandrel
