#pragma once

#include <functional>
#include <thread>

#include "base/clock.h"

namespace tandrel {

// Asks anew each time until it is so, where nothing tells of it; false after twenty seconds.
inline bool eventually(const std::function<bool()>& isSo,
                       Duration patience = std::chrono::seconds(20)) {
    const TimePoint end = systemClock().now() + patience;
    while (!isSo()) {
        if (systemClock().now() > end) return false;
        std::this_thread::yield();
    }
    return true;
}

}  // namespace tandrel
