#pragma once

#include <memory>
#include <string>
#include <vector>

#include "base/app_info.h"
#include "base/result.h"
#include "devices/devices.h"
#include "engine/engine.h"
#include "hid/hid_peripheral.h"
#include "payments/asker.h"
#include "payments/payment_gate.h"
#include "payments/payment_log.h"
#include "platform/linux/json_user_defaults.h"
#include "platform/main_loop.h"
#include "platform/permissions.h"
#include "platform/power.h"
#include "platform/running_applications.h"
#include "platform/usb_registry.h"
#include "platform/windows.h"
#include "screen/airplay_server.h"
#include "screen/mirrored_devices.h"
#include "screen/screen_capture.h"

namespace tandrel {

class VirtualPlatform;

// What stands behind the platform's headers in this process: the virtual phones when they are asked
// for, else this computer's own services.
struct Backends {
    MakeBluetoothPeripheral makeBluetooth;
    std::unique_ptr<VirtualPlatform> virtualPhones;  // none on the real platform
    std::unique_ptr<CaptureDevices> ownGrabbers;     // none when anything else is the cameras
    std::unique_ptr<CaptureDevices> ownCapture;      // none when the virtual phones are the cameras
    CaptureDevices* capture = nullptr;
    // None of these three when the virtual phones mirror.
    std::unique_ptr<AirPlayReceiver> receiver;
    std::unique_ptr<Windows> desktop;
    std::unique_ptr<Windows> ownWindows;  // the receiver's and the desktop's
    Windows* windows = nullptr;
    std::unique_ptr<Permissions> ownPermissions;
    Permissions* permissions = nullptr;
    std::unique_ptr<UsbRegistry> ownUsb;
    UsbRegistry* usb = nullptr;
    std::unique_ptr<TextRecognizer> recognizer;  // none: this computer's own
    // Sentences on what this system lacks; may be empty.
    std::function<std::vector<std::string>()> absences;

    Backends();
    Backends(Backends&&) noexcept;
    ~Backends();
    Backends& operator=(Backends&&) = delete;
    Backends(const Backends&) = delete;
    Backends& operator=(const Backends&) = delete;
    // Reads TANDREL_VIRTUAL_PHONE, TANDREL_CAPTURE_IMAGES and TANDREL_GRABBER. The error names a
    // scenario or picture that is not one, and where.
    static Result<Backends> open(const AppInfo& info, Clock& clock);

 private:
    void openGrabbers(const std::filesystem::path& settings, Clock& clock);
};

// Where this program's own files lie.
struct AppFiles {
    std::filesystem::path settings;
    std::filesystem::path log;
    std::filesystem::path pairings;
    std::filesystem::path approvals;
    std::filesystem::path engineState;
    static AppFiles of(const AppInfo& info);
};

// Every part of the engine, built once and in this order; it ends in the opposite order.
class Wiring {
 public:
    Wiring(Backends backends, AppInfo info, MainLoop& loop, Asker& asker, Clock& clock);
    ~Wiring();
    Wiring(const Wiring&) = delete;
    Wiring& operator=(const Wiring&) = delete;

    Engine& engine() { return engine_; }
    Backends& backends() { return backends_; }
    const Backends& backends() const { return backends_; }
    UserDefaults& defaults() { return defaults_; }
    HIDPeripheral& hid() { return hid_; }
    ScreenCapture& capture() { return capture_; }
    const AppFiles& files() const { return files_; }

 private:
    Backends backends_;
    const AppFiles files_;
    JsonUserDefaults defaults_;
    const std::unique_ptr<PeerIdentity> peers_;
    const std::unique_ptr<TextRecognizer> recognizer_;
    HIDPeripheral hid_;
    AirPlayServer airplay_;
    MirroredDevices screens_;
    ScreenCapture capture_;
    Devices devices_;
    PaymentLog paymentLog_;
    PaymentGate gate_;
    Engine engine_;
};

}  // namespace tandrel
