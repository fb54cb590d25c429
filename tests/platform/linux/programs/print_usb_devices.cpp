#include <cstdio>

#include "platform/linux/udev_usb_registry.h"

// Prints "vendor <product>" for each USB device; run under a simulated device tree.
int main() {
    for (const tandrel::UsbDevice& device : tandrel::UdevUsbRegistry().devices()) {
        std::printf("%d <%s>\n", device.vendorId, device.productName.c_str());
    }
}
