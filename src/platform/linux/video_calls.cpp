#include "platform/linux/video_calls.h"

#include <cerrno>

#include <fcntl.h>
#include <poll.h>
#include <sys/ioctl.h>
#include <sys/mman.h>
#include <unistd.h>

namespace tandrel {
namespace {

class SystemVideoCalls final : public VideoCalls {
 public:
    int open(const std::string& path) override {
        const int device = ::open(path.c_str(), O_RDWR | O_NONBLOCK | O_CLOEXEC);
        return device < 0 ? -errno : device;
    }
    void close(int device) override { ::close(device); }
    int ioctl(int device, unsigned long request, void* value) override {
        int result = 0;
        do {
            result = ::ioctl(device, request, value);
        } while (result < 0 && errno == EINTR);
        return result < 0 ? -errno : 0;
    }
    std::uint8_t* map(int device, std::size_t length, std::int64_t offset) override {
        void* memory = ::mmap(nullptr, length, PROT_READ, MAP_SHARED, device, offset);
        return memory == MAP_FAILED ? nullptr : static_cast<std::uint8_t*>(memory);
    }
    void unmap(std::uint8_t* memory, std::size_t length) override { ::munmap(memory, length); }
    int poll(int device, int wake, Duration longest) override {
        pollfd waits[] = {{device, POLLIN | POLLPRI, 0}, {wake, POLLIN, 0}};
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(longest);
        if (::poll(waits, 2, static_cast<int>(left.count())) <= 0) return 0;
        return waits[0].revents;
    }
};

}  // namespace

VideoCalls& systemVideoCalls() {
    static SystemVideoCalls calls;
    return calls;
}

}  // namespace tandrel
