#pragma once

#include <deque>
#include <mutex>
#include <utility>

#include "platform/capture_devices.h"
#include "support/eventually.h"

namespace tandrel {

// Takes a session's frames and hands out their sizes one by one.
class TakenFrames {
 public:
    using Size = std::pair<int, int>;

    FrameSink sink() {
        return [this](const PixelBuffer& frame) {
            std::lock_guard lock(mutex_);
            sizes_.emplace_back(frame.width(), frame.height());
        };
    }
    // 0 x 0 when none comes.
    Size next() {
        if (!eventually([this] { return !isEmpty(); })) return {0, 0};
        std::lock_guard lock(mutex_);
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
    std::deque<Size> sizes_;
};

}  // namespace tandrel
