#pragma once

#include <functional>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/mutex.h"
#include "base/serial_queue.h"
#include "platform/capture_devices.h"
#include "screen/screen.h"

namespace tandrel {

// The devices that are a connected phone's screen, in the system's order.
std::vector<CaptureDeviceInfo> iPhoneCaptureDevices(CaptureDevices& devices);

// One Screen for each plugged-in phone, following plugging and unplugging between `start` and
// `stop`. Opening a device may take a moment, so it is done on a queue of its own; `all` never
// waits for it. Public members may be called from any thread.
class ScreenCapture {
 public:
    // Both outlive the object.
    ScreenCapture(CaptureDevices& devices, Clock& clock);
    ~ScreenCapture();
    ScreenCapture(const ScreenCapture&) = delete;
    ScreenCapture& operator=(const ScreenCapture&) = delete;

    // The instance that the wiring built, which is there before anyone asks for it.
    static ScreenCapture& shared();
    static void setShared(ScreenCapture* instance);

    // Called once. When access is granted at once, the screens there are now are open on return.
    void start();
    // Ends every capture and opens the devices there are now afresh.
    void restart();
    // Ends every capture and every callback; none runs once it returned. Not from the callback.
    void stop();

    // Sorted by name, equal names by id.
    std::vector<std::shared_ptr<Screen>> all();
    // Called after a screen came or went, on the capture's queue and without any lock held.
    void setOnScreensChanged(std::function<void()> changed);

 private:
    using Screens = std::map<std::string, std::shared_ptr<Screen>>;

    void requestAccess();
    void refresh() RUNS_ON(queue_);
    bool dropGone(const std::vector<CaptureDeviceInfo>& present) RUNS_ON(queue_);
    bool addNew(const std::vector<CaptureDeviceInfo>& present) RUNS_ON(queue_);
    void stopScreens();
    Screens screens();

    CaptureDevices& devices_;
    Clock& clock_;
    Mutex mutex_;
    // Changed on the queue only; the lock is for those who read from elsewhere.
    Screens screens_ OWNED_BY(mutex_);
    std::function<void()> onScreensChanged_ OWNED_BY(mutex_);
    bool stopped_ OWNED_BY(queue_) = false;
    // Shared, because the answer about access may come when this object has gone.
    const std::shared_ptr<SerialQueue> sharedQueue_;
    SerialQueue& queue_;
};

}  // namespace tandrel
