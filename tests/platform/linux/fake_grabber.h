#pragma once

#include <condition_variable>
#include <deque>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include <linux/videodev2.h>
#include <sys/eventfd.h>

#include "base/bytes.h"
#include "base/file_descriptor.h"
#include "platform/linux/video_calls.h"
#include "platform/linux/video_nodes.h"

namespace tandrel {

// What a grabber answers to the calls that ask it, as recorded from one.
struct GrabberAnswers {
    struct Size {
        std::uint32_t width;
        std::uint32_t height;
        std::vector<std::uint32_t> framesPerSecond;
    };
    struct Format {
        std::uint32_t pixelFormat;
        std::vector<Size> sizes;  // none: it does not list them
    };
    std::string card;
    std::vector<Format> formats = {};
    std::uint32_t capabilities = V4L2_CAP_VIDEO_CAPTURE | V4L2_CAP_STREAMING;
    std::uint32_t bytesPerLine = 0;  // 0: as the form has it
    std::uint32_t settlesFor = 0;    // this pixel format, whatever is asked for
    std::uint32_t buffers = 4;
    int openError = 0;
    int streamError = 0;
};

// Grabbers that answer as recorded and deliver the frames that a test gives them; what is plugged
// in is what the list of nodes says, too.
class FakeGrabbers final : public VideoCalls {
 public:
    FakeGrabbers();

    struct Frame {
        Bytes bytes;
        bool isDamaged = false;
    };
    struct Device {
        GrabberAnswers answers;
        std::string port;
        bool isPlugged = true;
        bool works = true;  // or every call on it fails, though the node is still there
        bool streams = false;
        bool hasOtherSignal = false;
        bool isWaitOver = false;  // as if a wait's time had passed
        FileDescriptor wake;      // readable after every change
        std::uint32_t pixelFormat = 0;
        std::uint32_t width = 0;
        std::uint32_t height = 0;
        std::vector<Bytes> memory = {};
        std::deque<std::uint32_t> free = {};
        std::deque<Frame> frames = {};
    };

    void plugIn(const std::string& path, GrabberAnswers answers, const std::string& port = {});
    // The node is gone, and every call on it fails from now on.
    void unplug(const std::string& path);
    // Looks at a device or changes it, which whoever waits for it notices.
    template <typename Function>
    auto with(const std::string& path, Function function) {
        std::lock_guard lock(mutex_);
        Device& device = devices_.at(path);
        ::eventfd_write(device.wake.get(), 1);
        event_.notify_all();
        return function(device);
    }
    void deliver(const std::string& path, const Bytes& frame) {
        with(path, [&](Device& device) { device.frames.push_back({frame}); });
    }
    // Makes whoever waits for a change look again.
    void poke() const;

    // Blocks until the device streams and has given out every frame it got.
    bool awaitTaken(const std::string& path);
    int openCount();

    int open(const std::string& path) override;
    void close(int device) override;
    int ioctl(int device, unsigned long request, void* value) override;
    std::uint8_t* map(int device, std::size_t length, std::int64_t offset) override;
    void unmap(std::uint8_t* memory, std::size_t length) override;
    int poll(int device, int wake, Duration longest) override;

    std::unique_ptr<VideoNodes> nodes();

 private:
    int describe(Device& device, unsigned long request, void* value);
    int stream(Device& device, unsigned long request, void* value);
    static std::uint32_t frameBytes(const Device& device);

    std::mutex mutex_;
    std::condition_variable event_;
    std::map<std::string, Device> devices_;
    std::map<int, std::string> open_;
    int next_ = 1000;
    FileDescriptor poked_;  // readable when nodes came, went or were poked
};

}  // namespace tandrel
