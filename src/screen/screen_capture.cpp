#include "screen/screen_capture.h"

#include <algorithm>
#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <utility>

#include <fmt/format.h>

#include "base/log.h"

namespace tandrel {
namespace {

std::atomic<ScreenCapture*> sharedInstance{nullptr};

}  // namespace

std::vector<CaptureDeviceInfo> iPhoneCaptureDevices(CaptureDevices& devices) {
    std::vector<CaptureDeviceInfo> found = devices.devices();
    std::erase_if(found, [](const CaptureDeviceInfo& device) {
        return !device.connected || device.modelId.find("iOS") == std::string::npos;
    });
    return found;
}

ScreenCapture::ScreenCapture(CaptureDevices& devices, Clock& clock)
    : devices_(devices),
      clock_(clock),
      sharedQueue_(std::make_shared<SerialQueue>("pocketlink.screens")),
      queue_(*sharedQueue_) {}

ScreenCapture::~ScreenCapture() { stop(); }

ScreenCapture& ScreenCapture::shared() {
    ScreenCapture* instance = sharedInstance;
    if (instance != nullptr) return *instance;
    std::fputs("ScreenCapture::shared before the wiring made it\n", stderr);
    std::abort();
}

void ScreenCapture::setShared(ScreenCapture* instance) { sharedInstance = instance; }

void ScreenCapture::start() {
    devices_.allowScreenCaptureDevices();
    devices_.setOnDevicesChanged([this] {
        queue_.post([this] {
            queue_.assertCurrent();
            refresh();
        });
    });
    requestAccess();
    queue_.sync([] {});
}

void ScreenCapture::requestAccess() {
    // After `stop` the queue drops what is posted to it, so `this` is only used while it lives.
    devices_.requestAccess([this, weakQueue = std::weak_ptr(sharedQueue_)](bool granted) {
        const auto queue = weakQueue.lock();
        if (!queue) return;
        queue->post([this, granted] {
            queue_.assertCurrent();
            if (stopped_) return;
            log(granted ? "camera access granted" : "camera access denied");
            refresh();
        });
    });
}

void ScreenCapture::restart() {
    const auto again = [this] {
        queue_.assertCurrent();
        stopScreens();
        refresh();
    };
    if (queue_.isCurrent()) return again();
    queue_.sync(again);
}

void ScreenCapture::stop() {
    devices_.setOnDevicesChanged({});
    queue_.sync([this] {
        queue_.assertCurrent();
        stopped_ = true;
        stopScreens();
    });
    queue_.stop();
}

void ScreenCapture::stopScreens() {
    Screens ended;
    {
        MutexLock lock(mutex_);
        ended.swap(screens_);
    }
    for (const auto& [id, screen] : ended) screen->stop();
}

void ScreenCapture::refresh() {
    if (stopped_) return;
    const std::vector<CaptureDeviceInfo> present = iPhoneCaptureDevices(devices_);
    const bool someGone = dropGone(present);
    const bool someNew = addNew(present);
    if (screens().empty()) log("no iPhone screen yet (plug in over USB and trust this Mac)");
    if (!someGone && !someNew) return;
    std::function<void()> changed;
    {
        MutexLock lock(mutex_);
        changed = onScreensChanged_;
    }
    if (changed) changed();
}

bool ScreenCapture::dropGone(const std::vector<CaptureDeviceInfo>& present) {
    bool dropped = false;
    for (const auto& [id, screen] : screens()) {
        if (std::ranges::find(present, id, &CaptureDeviceInfo::id) != present.end()) continue;
        screen->stop();
        {
            MutexLock lock(mutex_);
            screens_.erase(id);
        }
        log("screen gone: " + screen->name());
        dropped = true;
    }
    return dropped;
}

bool ScreenCapture::addNew(const std::vector<CaptureDeviceInfo>& present) {
    bool added = false;
    for (const CaptureDeviceInfo& device : present) {
        if (screens().contains(device.id)) continue;
        auto screen = Screen::open(devices_, device, clock_);
        if (!screen) {
            log(fmt::format("capture failed for {}: {}", device.name, screen.error().message));
            continue;
        }
        log(fmt::format("capturing {} ({})", device.name, device.id));
        MutexLock lock(mutex_);
        screens_.emplace(device.id, *std::move(screen));
        added = true;
    }
    return added;
}

ScreenCapture::Screens ScreenCapture::screens() {
    MutexLock lock(mutex_);
    return screens_;
}

std::vector<std::shared_ptr<Screen>> ScreenCapture::all() {
    std::vector<std::shared_ptr<Screen>> result;
    for (auto& [id, screen] : screens()) result.push_back(screen);
    std::ranges::stable_sort(result, {}, [](const auto& screen) { return screen->name(); });
    return result;
}

void ScreenCapture::setOnScreensChanged(std::function<void()> changed) {
    MutexLock lock(mutex_);
    onScreensChanged_ = std::move(changed);
}

}  // namespace tandrel
