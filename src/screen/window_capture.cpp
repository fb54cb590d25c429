#include "screen/window_capture.h"

#include <utility>

#include "base/environment.h"
#include "screen/aspect.h"

namespace tandrel {
namespace {

constexpr const char* kNoFrame = "no frame yet from the AirPlay window";

ContentRect wholeFrame(const PixelBuffer& frame) {
    return {{0, 0, double(frame.width()), double(frame.height())},
            frame.height() < frame.width() ? "landscape" : "portrait",
            "edges"};
}

}  // namespace

WindowCapture::WindowCapture(Windows& windows, WinInfo window, Clock& clock,
                             std::function<void()> changed)
    : windows_(windows),
      info_(std::move(window)),
      clock_(clock),
      changed_(std::move(changed)),
      aspectHint_(parseAspect(environment("TANDREL_SCREEN_ASPECT"))),
      watch_("airplay"),
      wakeup_(std::make_shared<Wakeup>()) {
    clock_.attach(wakeup_);
}

WindowCapture::~WindowCapture() { stop(); }

Result<void> WindowCapture::start() {
    WindowEvents events{
        .frame = [this](const PixelBuffer& frame) { takeFrame(frame); },
        .hidden = [this](const std::string& why) { takeTrouble(why, false); },
        .ended = [this](const std::string& why) { takeTrouble(why, true); },
    };
    {
        std::lock_guard lock(wakeup_->mutex);
        started_ = true;
    }
    auto stream = windows_.open(info_.id, std::move(events));
    if (!stream) {
        std::lock_guard lock(wakeup_->mutex);
        ended_ = true;
        return std::unexpected(stream.error());
    }
    MutexLock lock(streamMutex_);
    stream_ = *std::move(stream);
    return {};
}

void WindowCapture::stop() {
    std::unique_ptr<WindowStream> stream;
    {
        MutexLock lock(streamMutex_);
        stream = std::move(stream_);
    }
    stream.reset();
    {
        std::lock_guard lock(wakeup_->mutex);
        ended_ = true;
        frame_ = {};
    }
    wakeup_->condition.notify_all();
}

bool WindowCapture::isRunning() const {
    std::lock_guard lock(wakeup_->mutex);
    return started_ && !ended_;
}

void WindowCapture::takeFrame(const PixelBuffer& frame) {
    if (!frame) return;
    bool isNews = false;
    {
        std::lock_guard lock(wakeup_->mutex);
        isNews = !frame_;
        if (isNews) ++appearances_;
        frame_ = frame;
        frameTime_ = clock_.now();
        ++frames_;
        trouble_.reset();
    }
    wakeup_->condition.notify_all();
    watch_.observe(frame, clock_.wallNow());
    {
        MutexLock lock(listenerMutex_);
        if (listener_) listener_(frame);
    }
    if (isNews) tellChanged();
}

void WindowCapture::takeTrouble(const std::string& why, bool isEnd) {
    {
        std::lock_guard lock(wakeup_->mutex);
        frame_ = {};
        trouble_ = why;
        ended_ = ended_ || isEnd;
    }
    wakeup_->condition.notify_all();
    tellChanged();
}

void WindowCapture::tellChanged() const {
    if (changed_) changed_();
}

std::optional<WindowCapture::Latest> WindowCapture::latest() const {
    std::lock_guard lock(wakeup_->mutex);
    if (!frame_) return std::nullopt;
    return Latest{frame_, toSeconds(clock_.now() - frameTime_)};
}

Result<WindowCapture::Latest> WindowCapture::awaitLatest(Duration patience,
                                                         const std::stop_token& stop) const {
    const TimePoint deadline = clock_.now() + patience;
    const std::stop_callback wake(stop, [this] {
        {
            std::lock_guard taken(wakeup_->mutex);
        }
        wakeup_->condition.notify_all();
    });
    std::unique_lock lock(wakeup_->mutex);
    while (!frame_ && !trouble_ && !ended_ && !stop.stop_requested() && clock_.now() < deadline) {
        clock_.waitUntil(lock, *wakeup_, deadline);
    }
    if (!frame_) return fail(trouble_.value_or(kNoFrame), 503);
    return Latest{frame_, toSeconds(clock_.now() - frameTime_)};
}

std::optional<std::string> WindowCapture::trouble() const {
    std::lock_guard lock(wakeup_->mutex);
    return trouble_;
}

std::uint64_t WindowCapture::frames() const {
    std::lock_guard lock(wakeup_->mutex);
    return frames_;
}

int WindowCapture::appearances() const {
    std::lock_guard lock(wakeup_->mutex);
    return appearances_;
}

ContentRect WindowCapture::content(const PixelBuffer& frame) {
    if (info_.isBare) return wholeFrame(frame);
    std::optional<std::string> prefer;
    {
        MutexLock lock(contentMutex_);
        prefer = content_.orientation();
    }
    const ContentRect found = withPixels(
        frame, [&](const Pixels& pixels) { return detectContent(pixels, aspectHint_, prefer); });
    MutexLock lock(contentMutex_);
    return content_.settle(found, {frame.width(), frame.height()});
}

void WindowCapture::setListener(std::function<void(PixelBuffer)> listener) {
    MutexLock lock(listenerMutex_);
    listener_ = std::move(listener);
    const auto newest = latest();
    if (listener_ && newest) listener_(newest->frame);
}

}  // namespace tandrel
