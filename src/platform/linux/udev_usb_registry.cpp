#include "platform/linux/udev_usb_registry.h"

#include <charconv>
#include <cstring>
#include <optional>

#include "platform/linux/udev_owned.h"

namespace tandrel {
namespace {

std::optional<UsbDevice> usbDeviceOf(udev_device* device) {
    const char* vendor = udev_device_get_sysattr_value(device, "idVendor");
    if (vendor == nullptr) return std::nullopt;
    UsbDevice result;
    const char* end = vendor + std::strlen(vendor);
    const auto parsed = std::from_chars(vendor, end, result.vendorId, 16);
    if (parsed.ec != std::errc() || parsed.ptr != end) return std::nullopt;
    const char* product = udev_device_get_sysattr_value(device, "product");
    if (product != nullptr) result.productName = product;
    return result;
}

}  // namespace

std::vector<UsbDevice> UdevUsbRegistry::devices() {
    const UdevOwned<udev> context(udev_new());
    if (!context) return {};
    const UdevOwned<udev_enumerate> list(udev_enumerate_new(context.get()));
    if (!list || udev_enumerate_add_match_subsystem(list.get(), "usb") < 0 ||
        udev_enumerate_add_match_property(list.get(), "DEVTYPE", "usb_device") < 0 ||
        udev_enumerate_scan_devices(list.get()) < 0) {
        return {};
    }
    std::vector<UsbDevice> result;
    udev_list_entry* entry = nullptr;
    udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(list.get())) {
        const UdevOwned<udev_device> device(
            udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
        if (!device) continue;  // unplugged since the scan
        if (auto usb = usbDeviceOf(device.get())) result.push_back(std::move(*usb));
    }
    return result;
}

}  // namespace tandrel
