#pragma once

#include <functional>
#include <memory>
#include <vector>

#include "platform/capture_devices.h"
#include "screen/screen.h"

namespace tandrel {

// CONTRACT SKETCH: the screen room fills this in.
class ScreenCapture {
 public:
    ScreenCapture(CaptureDevices& devices, Clock& clock);
    static ScreenCapture& shared();
    static void setShared(ScreenCapture* instance);
    void start();
    void restart();
    void stop();
    std::vector<std::shared_ptr<Screen>> all();  // by name
    void setOnScreensChanged(std::function<void()> changed);
};

}  // namespace tandrel
