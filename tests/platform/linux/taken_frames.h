#pragma once

#include <condition_variable>
#include <deque>
#include <mutex>
#include <utility>

#include "platform/capture_devices.h"

namespace tandrel {

// Takes a session's frames and hands out their sizes one by one.
class TakenFrames {
 public:
    using Size = std::pair<int, int>;

    FrameSink sink() {
        return [this](const PixelBuffer& frame) {
            std::lock_guard lock(mutex_);
            sizes_.emplace_back(frame.width(), frame.height());
            came_.notify_all();
        };
    }
    // 0 x 0 when none comes.
    Size next() {
        std::unique_lock lock(mutex_);
        const auto any = [this] { return !sizes_.empty(); };
        if (!came_.wait_for(lock, std::chrono::seconds(10), any)) return {0, 0};
        const Size size = sizes_.front();
        sizes_.pop_front();
        return size;
    }
    bool isEmpty() {
        std::lock_guard lock(mutex_);
        return sizes_.empty();
    }

 private:
    std::mutex mutex_;
    std::condition_variable came_;
    std::deque<Size> sizes_;
};

}  // namespace tandrel
