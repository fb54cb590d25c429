#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/json.h"
#include "base/pixel_buffer.h"
#include "base/result.h"

// The windows on the owner's desktop and the pictures in them.
namespace tandrel {

// In points of the desktop, origin top left.
struct WindowBounds {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const WindowBounds&) const = default;
};

struct WinInfo {
    std::uint32_t id = 0;
    std::string owner = {};   // the application's name
    std::string bundle = {};  // its identifier in reverse-DNS form; empty when unknown
    std::int32_t pid = 0;
    std::string title = {};
    WindowBounds frame = {};
    int layer = 0;          // 0 is that of ordinary windows
    bool onScreen = false;  // neither minimised nor on another desktop
    // Its picture is the phone's screen and nothing else: there is no frame to look for in it.
    bool isBare = false;
    int score = 0;  // how likely it is a mirrored phone's, once that was asked

    bool operator==(const WinInfo&) const = default;

    // "id", "owner", "bundle", "pid", "title", "layer", "onScreen", "x", "y", "w", "h", "score"
    Json json() const;
};

// What a running stream tells, on a thread of the backend; each must return soon.
struct WindowEvents {
    // A new picture of the window's content, the pointer left out; may be kept.
    std::function<void(PixelBuffer frame)> frame;
    // There is no picture for now, and what to do about it; the next frame ends that.
    std::function<void(const std::string& why)> hidden;
    // There will be none any more. Told once, and nothing after it.
    std::function<void(const std::string& why)> ended;
};

// One running capture of one window. No event arrives once the destructor returned.
class WindowStream {
 public:
    virtual ~WindowStream() = default;
};

// Any thread.
class Windows {
 public:
    virtual ~Windows() = default;
    // Every window but the desktop's own. The error says why nothing can be seen and what to do.
    virtual Result<std::vector<WinInfo>> all() = 0;
    // Starts a capture, covered or not. May block for a moment; the first frame comes by itself.
    virtual Result<std::unique_ptr<WindowStream>> open(std::uint32_t id, WindowEvents events) = 0;
};

// The error of a window that is there no longer.
Error windowIsGone(std::uint32_t id);

}  // namespace tandrel
