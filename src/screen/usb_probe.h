#pragma once

#include <string>
#include <vector>

#include "platform/usb_registry.h"

namespace tandrel {

// Tells a missing cable from a phone that is plugged in and does not share its screen: it looks at
// the USB bus, where a phone shows before anyone trusted the computer.
struct USBProbe {
    // The product names of the plugged-in iPhones.
    static std::vector<std::string> iPhonesPluggedIn(UsbRegistry& registry);
};

}  // namespace tandrel
