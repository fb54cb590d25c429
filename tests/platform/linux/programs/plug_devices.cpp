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

// As umockdev(1) describes devices: an iPhone and its interface, three that say less of themselves
// or something odd, one that is not on the bus, a grabber's two nodes and its button.
constexpr const char* kDevices = R"(P: /devices/usb1/1-1
E: SUBSYSTEM=usb
E: DEVTYPE=usb_device
A: idVendor=05ac\n
A: product=iPhone\n

P: /devices/usb1/1-1/1-1:1.0
E: SUBSYSTEM=usb
E: DEVTYPE=usb_interface
A: idVendor=05ac\n
A: product=interface\n

P: /devices/usb1/1-2
E: SUBSYSTEM=usb
E: DEVTYPE=usb_device
A: idVendor=ffff\n

P: /devices/usb1/1-3
E: SUBSYSTEM=usb
E: DEVTYPE=usb_device
A: product=no vendor\n

P: /devices/usb1/1-4
E: SUBSYSTEM=usb
E: DEVTYPE=usb_device
A: idVendor=5acx\n
A: product=odd vendor\n

P: /devices/input0
E: SUBSYSTEM=input
E: DEVTYPE=usb_device
A: idVendor=05ac\n
A: product=not on the bus\n

P: /devices/usb1/1-2/video4linux/video0
N: video0
E: DEVNAME=/dev/video0
E: SUBSYSTEM=video4linux
E: ID_PATH=pci-0000:00:14.0-usb-0:1:1.0
A: name=USB Video: USB Video\n

P: /devices/usb1/1-2/video4linux/video1
N: video1
E: DEVNAME=/dev/video1
E: SUBSYSTEM=video4linux
A: name=USB Video: USB Video\n

P: /devices/usb1/1-2/input/event9
E: DEVNAME=/dev/input/event9
E: SUBSYSTEM=input
)";

}  // namespace

// Plugs an iPhone and a grabber into a simulated device tree and the grabber's nodes out again, and
// prints what is seen of them.
int main() {
    UMockdevTestbed* testbed = umockdev_testbed_new();
    const auto nodes = makeUdevVideoNodes();
    print("before", *nodes);
    GError* error = nullptr;
    if (umockdev_testbed_add_from_string(testbed, kDevices, &error) == FALSE) {
        std::printf("%s\n", error->message);
        return 1;
    }
    constexpr const char* kFirst = "/sys/devices/usb1/1-2/video4linux/video0";
    umockdev_testbed_uevent(testbed, kFirst, "add");
    await(*nodes);
    print("plugged in", *nodes);
    for (const char* node : {kFirst, "/sys/devices/usb1/1-2/video4linux/video1"}) {
        umockdev_testbed_uevent(testbed, node, "remove");
        umockdev_testbed_remove_device(testbed, node);
    }
    await(*nodes);
    print("unplugged", *nodes);
    g_object_unref(testbed);
}
