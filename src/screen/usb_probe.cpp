#include "screen/usb_probe.h"

namespace tandrel {

std::vector<std::string> USBProbe::iPhonesPluggedIn(UsbRegistry& registry) {
    constexpr int kPhoneMakersVendorId = 0x5ac;
    std::vector<std::string> names;
    for (const UsbDevice& device : registry.devices()) {
        if (device.vendorId == kPhoneMakersVendorId && device.productName.contains("iPhone")) {
            names.push_back(device.productName);
        }
    }
    return names;
}

}  // namespace tandrel
