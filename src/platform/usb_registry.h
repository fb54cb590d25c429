#pragma once

#include <string>
#include <vector>

// The devices on the USB bus, whether or not they can be used.
namespace tandrel {

struct UsbDevice {
    int vendorId = 0;
    std::string productName;
};

class UsbRegistry {
 public:
    virtual ~UsbRegistry() = default;
    virtual std::vector<UsbDevice> devices() = 0;
};

}  // namespace tandrel
