#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/mutex.h"
#include "platform/windows.h"
#include "screen/content_memory.h"
#include "screen/picture_watch.h"

namespace tandrel {

// One capture of one window: holds its newest picture, knows when it changed and where in it the
// phone's screen lies. Any thread, except that `stop` and the destructor are not for the thread on
// which the window's events arrive.
class WindowCapture {
 public:
    // Reads TANDREL_SCREEN_ASPECT, the phone's shape where it is no known one. `changed` is called
    // on the events' thread when the picture first comes, goes or ends.
    WindowCapture(Windows& windows, WinInfo window, Clock& clock,
                  std::function<void()> changed = {});
    ~WindowCapture();
    WindowCapture(const WindowCapture&) = delete;
    WindowCapture& operator=(const WindowCapture&) = delete;

    const WinInfo& info() const { return info_; }

    // Blocks until frames are on their way. Once only.
    Result<void> start();
    // No frame is taken and nothing is told once it returned. Safe to repeat.
    void stop();
    // From `start` until the window closed or the capture was stopped.
    bool isRunning() const;

    struct Latest {
        PixelBuffer frame;
        double ageSeconds = 0;  // since it came
    };
    // None before the first frame and while the window is hidden.
    std::optional<Latest> latest() const;
    // The same, after waiting for it; the error says why there is none.
    Result<Latest> awaitLatest(Duration patience, const std::stop_token& stop) const;
    // Why there is no picture just now, when the window said so.
    std::optional<std::string> trouble() const;

    // Where on a frame of this window the phone's screen lies. Costs about a millisecond.
    ContentRect content(const PixelBuffer& frame);
    // The frame's part that is the phone's screen; no pixel is copied.
    PixelBuffer phoneScreen(const PixelBuffer& frame) {
        return cropped(frame, content(frame).rect);
    }

    std::vector<double> changeTimes(double since) { return watch_.changeTimes(since); }
    std::uint64_t frames() const;
    // How often a picture came after there had been none. Another phone may show from then on.
    int appearances() const;

    // From now on each new frame goes to `listener` on the events' thread, and the newest one at
    // once. An empty one ends that and waits for a call under way.
    void setListener(std::function<void(PixelBuffer frame)> listener);

 private:
    void takeFrame(const PixelBuffer& frame);
    void takeTrouble(const std::string& why, bool isEnd);
    void tellChanged() const;

    Windows& windows_;
    const WinInfo info_;
    Clock& clock_;
    const std::function<void()> changed_;
    const std::optional<double> aspectHint_;
    PictureWatch watch_;

    // Guards what follows.
    const std::shared_ptr<Wakeup> wakeup_;
    PixelBuffer frame_;
    TimePoint frameTime_;
    std::uint64_t frames_ = 0;
    int appearances_ = 0;
    bool started_ = false;
    bool ended_ = false;
    std::optional<std::string> trouble_;

    Mutex contentMutex_;
    ContentMemory content_ OWNED_BY(contentMutex_);
    Mutex listenerMutex_;  // held while the listener runs, which returns soon
    std::function<void(PixelBuffer)> listener_ OWNED_BY(listenerMutex_);
    Mutex streamMutex_;
    std::unique_ptr<WindowStream> stream_ OWNED_BY(streamMutex_);
};

}  // namespace tandrel
