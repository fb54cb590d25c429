#pragma once

#include <filesystem>
#include <memory>
#include <string>
#include <string_view>
#include <vector>

#include "platform/bluetooth_peripheral.h"
#include "platform/permissions.h"
#include "platform/usb_registry.h"
#include "platform/virtual/virtual_capture_devices.h"
#include "platform/virtual/virtual_phone.h"
#include "platform/windows.h"

namespace tandrel {

// The services of the operating system with virtual phones behind them.
class VirtualPlatform {
 public:
    static constexpr std::size_t kMostPhones = 16;

    // `choice` names scenario files, separated by ":"; "1" is the default scenario, which lies in
    // the folder "scenarios" of `share`, the application's folder of shipped files. The same
    // scenario may be named more than once. The error names the file and the place in it.
    static Result<std::unique_ptr<VirtualPlatform>> open(std::string_view choice,
                                                         const std::filesystem::path& share,
                                                         Clock& clock);

    // Each has an id, a name and a Bluetooth identity of its own.
    const std::vector<std::unique_ptr<VirtualPhone>>& phones() const { return phones_; }

    // Every peripheral made goes before this does.
    const MakeBluetoothPeripheral& makeBluetoothPeripheral() const { return makeBluetooth_; }
    CaptureDevices& captureDevices() { return *captureDevices_; }
    // One mirroring window for each phone that mirrors its screen.
    Windows& windows() { return *windows_; }
    Permissions& permissions() { return *permissions_; }
    UsbRegistry& usbRegistry() { return *usbRegistry_; }

 private:
    VirtualPlatform(std::vector<Scenario> scenarios, Clock& clock);

    std::vector<std::unique_ptr<VirtualPhone>> phones_;
    MakeBluetoothPeripheral makeBluetooth_;
    std::unique_ptr<CaptureDevices> captureDevices_;
    std::unique_ptr<Windows> windows_;
    std::unique_ptr<Permissions> permissions_;
    std::unique_ptr<UsbRegistry> usbRegistry_;
};

}  // namespace tandrel
