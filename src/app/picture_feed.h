#pragma once

#include <QImage>
#include <functional>
#include <stop_token>

#include "base/mutex.h"
#include "base/serial_queue.h"
#include "http/loopback_url.h"
#include "platform/main_loop.h"

namespace tandrel {

// What the phone shows, fetched from the engine a few times a second while somebody watches, on a
// thread of its own.
class PictureFeed {
 public:
    // `show` is called on the main thread; a null image says that there is no picture.
    PictureFeed(MainLoop& loop, Clock& clock, std::function<void(const QImage&)> show);
    // Main thread; no call of `show` comes afterwards.
    ~PictureFeed();
    PictureFeed(const PictureFeed&) = delete;
    PictureFeed& operator=(const PictureFeed&) = delete;

    // Where the engine listens. Any thread.
    void setEngine(LoopbackUrl engine);
    void setWatched(bool watched);

 private:
    void fetchAgain() RUNS_ON(queue_);

    MainLoop& loop_;
    const std::shared_ptr<std::function<void(const QImage&)>> show_;
    std::stop_source stopping_;
    std::optional<LoopbackUrl> engine_ OWNED_BY(queue_);
    bool watched_ OWNED_BY(queue_) = false;
    bool fetching_ OWNED_BY(queue_) = false;
    SerialQueue queue_;
};

}  // namespace tandrel
