#pragma once

#include <deque>
#include <optional>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/mutex.h"
#include "base/pixel_buffer.h"
#include "base/serial_queue.h"
#include "image/window_thumbnail.h"

namespace tandrel {

// Milliseconds since 1970, as the change times are given.
double millisecondsSince1970(WallTime time);

// When a picture changed, frame by frame: the latest kMostTimes times at which a frame's window
// thumbnail differed from the one before. Not for several threads at once.
class ChangeTimes {
 public:
    static constexpr std::size_t kMostTimes = 400;

    void add(const WindowThumbnail& thumbnail, double time);
    // Those later than `since`, oldest first.
    std::vector<double> after(double since) const;

 private:
    std::optional<WindowThumbnail> previous_;
    std::deque<double> times_;
};

// Watches one screen's frames for changes on a queue of its own, so that looking costs the frame
// path nothing. A frame that comes while one still waits takes its place. Any thread.
class PictureWatch {
 public:
    explicit PictureWatch(const std::string& screenId);

    // Returns at once.
    void observe(PixelBuffer frame, WallTime time);
    // The times of changes later than `since`, oldest first, in milliseconds since 1970; those of
    // all frames observed before the call count.
    std::vector<double> changeTimes(double since);

 private:
    struct Arrival {
        PixelBuffer frame;
        WallTime time;
    };

    void lookAtPending() RUNS_ON(queue_);

    Mutex mutex_;
    std::optional<Arrival> pending_ OWNED_BY(mutex_);
    PixelBuffer previous_ OWNED_BY(queue_);
    ChangeTimes changes_ OWNED_BY(queue_);
    SerialQueue queue_;
};

}  // namespace tandrel
