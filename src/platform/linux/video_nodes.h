#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/clock.h"

namespace tandrel {

// A video device as the system lists it.
struct VideoNode {
    std::string path;  // under /dev
    std::string port;  // where it is plugged in, the same each time; empty when that is not known
    std::string name;  // what it calls itself

    bool operator==(const VideoNode&) const = default;
};

// The video devices there are, and word of each that comes and goes.
class VideoNodes {
 public:
    virtual ~VideoNodes() = default;
    // By path. Any thread.
    virtual std::vector<VideoNode> list() = 0;
    // Waits until the list may have changed, until `wake` is readable or until the time has passed.
    // One thread.
    virtual void awaitChange(int wake, Duration longest) = 0;
};

// As udev knows them; without udev the list is empty.
std::unique_ptr<VideoNodes> makeUdevVideoNodes();

}  // namespace tandrel
