#pragma once

#include "platform/usb_registry.h"

namespace tandrel {

// The USB devices that udev knows of, by what each says about itself; needs no access to them. A
// device that gives no vendor is left out. Empty where there is no USB. Any thread.
class UdevUsbRegistry final : public UsbRegistry {
 public:
    std::vector<UsbDevice> devices() override;
};

}  // namespace tandrel
