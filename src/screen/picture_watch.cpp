#include "screen/picture_watch.h"

#include <algorithm>
#include <chrono>
#include <iterator>
#include <utility>

namespace tandrel {

double millisecondsSince1970(WallTime time) {
    return std::chrono::duration<double, std::milli>(time.time_since_epoch()).count();
}

void ChangeTimes::add(const WindowThumbnail& thumbnail, double time) {
    if (previous_ && differ(*previous_, thumbnail)) {
        times_.push_back(time);
        if (times_.size() > kMostTimes) times_.pop_front();
    }
    previous_ = thumbnail;
}

std::vector<double> ChangeTimes::after(double since) const {
    std::vector<double> result;
    std::ranges::copy_if(times_, std::back_inserter(result),
                         [since](double time) { return time > since; });
    return result;
}

PictureWatch::PictureWatch(const std::string& screenId) : queue_("tandrel.changes." + screenId) {}

void PictureWatch::observe(PixelBuffer frame, WallTime time) {
    std::optional<Arrival> arrival = Arrival{std::move(frame), time};
    {
        MutexLock lock(mutex_);
        std::swap(pending_, arrival);
    }
    const bool isPosted = arrival.has_value();
    if (isPosted) return;
    queue_.post([this] {
        queue_.assertCurrent();
        lookAtPending();
    });
}

void PictureWatch::lookAtPending() {
    std::optional<Arrival> arrival;
    {
        MutexLock lock(mutex_);
        std::swap(pending_, arrival);
    }
    // A source that shows a still picture sends the same pixels again and again.
    if (arrival->frame.sharesPixelsWith(previous_)) return;
    changes_.add(withPixels(arrival->frame, windowThumbnail), millisecondsSince1970(arrival->time));
    previous_ = std::move(arrival->frame);
}

std::vector<double> PictureWatch::changeTimes(double since) {
    return queue_.sync([&] {
        queue_.assertCurrent();
        return changes_.after(since);
    });
}

}  // namespace tandrel
