#include <cstdio>

#include <umockdev.h>

#include "platform/linux/udev_usb_registry.h"
#include "platform/linux/video_nodes.h"

namespace {

using namespace tandrel;

void print(const char* moment, VideoNodes& nodes) {
    std::printf("%s:", moment);
    for (const auto& node : nodes.list()) {
        std::printf(" <%s|%s|%s>", node.path.c_str(), node.port.c_str(), node.name.c_str());
    }
    for (const auto& device : UdevUsbRegistry().devices()) {
        std::printf(" %d <%s>", device.vendorId, device.productName.c_str());
    }
    std::printf("\n");
}

// Whether word of a change comes before the wait is over.
void await(VideoNodes& nodes) {
    constexpr auto kLongest = std::chrono::seconds(30);
    const auto start = systemClock().now();
    nodes.awaitChange(-1, kLongest);
    if (systemClock().now() - start >= kLongest) std::printf("no word of it\n");
}

// What it says of itself, pairs in rows; the result is its place in the tree.
template <typename... Words>
std::string plugIn(UMockdevTestbed* testbed, const char* subsystem, const char* name,
                   const char* type, Words... words) {
    gchar* path = umockdev_testbed_add_device(testbed, subsystem, name, nullptr, words..., nullptr,
                                              "DEVTYPE", type, nullptr);
    const std::string place = path;
    g_free(path);
    return place;
}

}  // namespace

// Plugs an iPhone and a grabber into a simulated device tree and the grabber's nodes out again, and
// prints what is seen of them.
int main() {
    UMockdevTestbed* testbed = umockdev_testbed_new();
    const auto nodes = makeUdevVideoNodes();
    print("before", *nodes);
    constexpr const char* kDevice = "usb_device";
    plugIn(testbed, "usb", "1-1", kDevice, "idVendor", "05ac", "product", "iPhone");
    plugIn(testbed, "usb", "1-1:1.0", "usb_interface", "idVendor", "05ac", "product", "interface");
    plugIn(testbed, "usb", "1-2", kDevice, "idVendor", "ffff");
    plugIn(testbed, "usb", "1-3", kDevice, "product", "no vendor");
    plugIn(testbed, "usb", "1-4", kDevice, "idVendor", "5acx", "product", "odd vendor");
    plugIn(testbed, "input", "input0", kDevice, "idVendor", "05ac", "product", "not on the bus");
    std::string grabber[2];
    const char* ports[] = {"pci-0000:00:14.0-usb-0:1:1.0", ""};
    for (const int i : {0, 1}) {
        const std::string name = "video" + std::to_string(i);
        grabber[i] =
            plugIn(testbed, "video4linux", name.c_str(), "", "name", "USB Video: USB Video");
        umockdev_testbed_set_property(testbed, grabber[i].c_str(), "DEVNAME",
                                      ("/dev/" + name).c_str());
        if (*ports[i] != 0) {
            umockdev_testbed_set_property(testbed, grabber[i].c_str(), "ID_PATH", ports[i]);
        }
        umockdev_testbed_uevent(testbed, grabber[i].c_str(), "add");
    }
    await(*nodes);
    print("plugged in", *nodes);
    for (const std::string& node : grabber) {
        umockdev_testbed_uevent(testbed, node.c_str(), "remove");
        umockdev_testbed_remove_device(testbed, node.c_str());
    }
    await(*nodes);
    print("unplugged", *nodes);
    g_object_unref(testbed);
}
