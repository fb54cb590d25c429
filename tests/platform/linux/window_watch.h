#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <string>

#include "platform/windows.h"

namespace tandrel {

// Keeps what a window's stream tells, and waits for it: ten seconds at most.
class WindowWatch {
 public:
    WindowEvents events() {
        return {.frame =
                    [this](PixelBuffer frame) {
                        tell([&] {
                            newest_ = std::move(frame);
                            hidden_.clear();
                        });
                    },
                .hidden = [this](const std::string& why) { tell([&] { hidden_ = why; }); },
                .ended = [this](const std::string& why) { tell([&] { ended_ = why; }); }};
    }

    // Of the newest frame: its size, and blue, green and red of its middle.
    bool awaitFrame(int width, int height, std::uint32_t colour) {
        return await([&] { return isNewest(width, height, colour); });
    }
    bool shows(int width, int height, std::uint32_t colour) {
        std::lock_guard lock(mutex_);
        return isNewest(width, height, colour);
    }
    std::string awaitHidden() {
        await([&] { return !hidden_.empty(); });
        return hidden_;
    }
    std::string awaitEnd() {
        await([&] { return !ended_.empty(); });
        return ended_;
    }

 private:
    bool await(const std::function<bool()>& fits) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(10), fits);
    }
    bool isNewest(int width, int height, std::uint32_t colour) const {
        if (newest_.width() != width || newest_.height() != height) return false;
        const std::uint8_t* p = newest_.row(height / 2) + std::ptrdiff_t{4} * (width / 2);
        return (std::uint32_t{p[2]} << 16 | std::uint32_t{p[1]} << 8 | p[0]) == colour;
    }
    void tell(const std::function<void()>& note) {
        {
            std::lock_guard lock(mutex_);
            note();
        }
        changed_.notify_all();
    }

    std::mutex mutex_;
    std::condition_variable changed_;
    PixelBuffer newest_;
    std::string hidden_;
    std::string ended_;
};

}  // namespace tandrel
