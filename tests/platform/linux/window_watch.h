#pragma once

#include <mutex>
#include <string>

#include "platform/windows.h"
#include "support/eventually.h"

namespace tandrel {

// Keeps what a window's stream tells, and waits for it.
class WindowWatch {
 public:
    WindowEvents events() {
        const auto newest = [this](PixelBuffer frame) {
            std::lock_guard lock(mutex_);
            newest_ = std::move(frame);
            hidden_.clear();
        };
        const auto into = [this](std::string& text) {
            return [this, &text](const std::string& why) {
                std::lock_guard lock(mutex_);
                text = why;
            };
        };
        return {.frame = newest, .hidden = into(hidden_), .ended = into(ended_)};
    }

    // Of the newest frame: its size, and blue, green and red of its middle.
    bool shows(int width, int height, std::uint32_t colour) {
        std::lock_guard lock(mutex_);
        if (newest_.width() != width || newest_.height() != height) return false;
        const std::uint8_t* p = newest_.row(height / 2) + std::ptrdiff_t{4} * (width / 2);
        return (std::uint32_t{p[2]} << 16 | std::uint32_t{p[1]} << 8 | p[0]) == colour;
    }
    bool awaitFrame(int width, int height, std::uint32_t colour) {
        return eventually([&] { return shows(width, height, colour); });
    }
    std::string awaitHidden() { return awaitText(hidden_); }
    std::string awaitEnd() { return awaitText(ended_); }

 private:
    std::string awaitText(const std::string& text) {
        std::string now;
        eventually([&] {
            std::lock_guard lock(mutex_);
            return !(now = text).empty();
        });
        return now;
    }

    std::mutex mutex_;
    PixelBuffer newest_;
    std::string hidden_;
    std::string ended_;
};

}  // namespace tandrel
