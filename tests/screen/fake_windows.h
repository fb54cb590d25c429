#pragma once

#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "platform/windows.h"

namespace tandrel {

// Windows that a test opens, draws and closes by hand. Events come on the test's own thread.
class FakeWindows final : public Windows {
 public:
    static WinInfo receiver(std::uint32_t id = 7) {
        return {.id = id,
                .owner = "AirPlay receiver",
                .pid = 42,
                .title = "Phone",
                .frame = {10, 20, 300, 650},
                .onScreen = true};
    }

    void show(const WinInfo& window) {
        std::lock_guard lock(mutex_);
        windows_.push_back(window);
    }
    // `all` and `open` fail with this sentence until it is empty again.
    void refuse(const std::string& sentence) {
        std::lock_guard lock(mutex_);
        refusal_ = sentence;
    }
    // Each says whether a stream of that window runs.
    bool draw(std::uint32_t id, const PixelBuffer& frame) {
        return tell(id, [&](const WindowEvents& events) { events.frame(frame); });
    }
    bool hide(std::uint32_t id, const std::string& why) {
        return tell(id, [&](const WindowEvents& events) { events.hidden(why); });
    }
    bool close(std::uint32_t id) {
        {
            std::lock_guard lock(mutex_);
            std::erase_if(windows_, [&](const WinInfo& window) { return window.id == id; });
        }
        const std::string why = windowIsGone(id).message;
        return tell(id, [&](const WindowEvents& events) { events.ended(why); });
    }
    int opened() {
        std::lock_guard lock(mutex_);
        return opened_;
    }
    // Frames that every stream brings at once when it is opened.
    void drawAtOpen(const PixelBuffer& frame) {
        std::lock_guard lock(mutex_);
        first_ = frame;
    }

    Result<std::vector<WinInfo>> all() override {
        std::lock_guard lock(mutex_);
        if (!refusal_.empty()) return fail(refusal_, 503);
        return windows_;
    }
    Result<std::unique_ptr<WindowStream>> open(std::uint32_t id, WindowEvents events) override {
        PixelBuffer first;
        {
            std::lock_guard lock(mutex_);
            if (std::ranges::find(windows_, id, &WinInfo::id) == windows_.end()) {
                return std::unexpected(windowIsGone(id));
            }
            ++opened_;
            running_[id] = events;
            first = first_;
        }
        if (first) events.frame(first);
        return std::make_unique<Stream>(*this, id);
    }

 private:
    class Stream final : public WindowStream {
     public:
        Stream(FakeWindows& windows, std::uint32_t id) : windows_(windows), id_(id) {}
        ~Stream() override {
            std::lock_guard calling(windows_.calling_);
            std::lock_guard lock(windows_.mutex_);
            windows_.running_.erase(id_);
        }

     private:
        FakeWindows& windows_;
        const std::uint32_t id_;
    };

    template <typename Tell>
    bool tell(std::uint32_t id, Tell&& deed) {
        std::lock_guard calling(calling_);
        WindowEvents events;
        {
            std::lock_guard lock(mutex_);
            const auto running = running_.find(id);
            if (running == running_.end()) return false;
            events = running->second;
        }
        deed(events);
        return true;
    }

    std::mutex mutex_;
    std::mutex calling_;  // held while events run
    std::vector<WinInfo> windows_;
    std::map<std::uint32_t, WindowEvents> running_;
    std::string refusal_;
    PixelBuffer first_;
    int opened_ = 0;
};

}  // namespace tandrel
