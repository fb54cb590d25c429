#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

#include "base/clock.h"

namespace tandrel {

// The system calls that drive a video device. Numbers that report a failure are -errno. Any thread.
class VideoCalls {
 public:
    virtual ~VideoCalls() = default;
    // A descriptor that never blocks.
    virtual int open(const std::string& path) = 0;
    virtual void close(int device) = 0;
    virtual int ioctl(int device, unsigned long request, void* value) = 0;
    // Memory shared with the device; null when that fails.
    virtual std::uint8_t* map(int device, std::size_t length, std::int64_t offset) = 0;
    virtual void unmap(std::uint8_t* memory, std::size_t length) = 0;
    // Waits for the device, for `wake` to become readable or for the time to pass. What poll(2)
    // tells about the device.
    virtual int poll(int device, int wake, Duration longest) = 0;
};

VideoCalls& systemVideoCalls();

}  // namespace tandrel
