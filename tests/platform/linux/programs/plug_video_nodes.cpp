#include <cstdio>

#include <umockdev.h>

#include "platform/linux/video_nodes.h"

namespace {

using tandrel::systemClock;

constexpr auto kLongest = std::chrono::seconds(30);

void print(const char* moment, tandrel::VideoNodes& nodes) {
    std::printf("%s:", moment);
    for (const auto& node : nodes.list()) {
        std::printf(" <%s|%s|%s>", node.path.c_str(), node.port.c_str(), node.name.c_str());
    }
    std::printf("\n");
}

// Whether word of a change comes before the wait is over.
void await(tandrel::VideoNodes& nodes) {
    const auto start = systemClock().now();
    nodes.awaitChange(-1, kLongest);
    if (systemClock().now() - start >= kLongest) std::printf("no word of it\n");
}

constexpr const char* kGrabber = R"(P: /devices/usb1/1-1/video4linux/video0
N: video0
E: DEVNAME=/dev/video0
E: SUBSYSTEM=video4linux
E: ID_PATH=pci-0000:00:14.0-usb-0:1:1.0
A: name=USB Video: USB Video\n

P: /devices/usb1/1-1/video4linux/video1
N: video1
E: DEVNAME=/dev/video1
E: SUBSYSTEM=video4linux
A: name=USB Video: USB Video\n

P: /devices/usb1/1-1/input/event9
E: DEVNAME=/dev/input/event9
E: SUBSYSTEM=input
)";

}  // namespace

// Plugs a grabber into a simulated device tree and out again, and prints what is seen of it.
int main() {
    UMockdevTestbed* testbed = umockdev_testbed_new();
    const auto nodes = tandrel::makeUdevVideoNodes();
    print("before", *nodes);
    GError* error = nullptr;
    if (umockdev_testbed_add_from_string(testbed, kGrabber, &error) == FALSE) {
        std::printf("%s\n", error->message);
        return 1;
    }
    constexpr const char* kFirst = "/sys/devices/usb1/1-1/video4linux/video0";
    constexpr const char* kSecond = "/sys/devices/usb1/1-1/video4linux/video1";
    umockdev_testbed_uevent(testbed, kFirst, "add");
    await(*nodes);
    print("plugged in", *nodes);
    for (const char* node : {kFirst, kSecond}) {
        umockdev_testbed_uevent(testbed, node, "remove");
        umockdev_testbed_remove_device(testbed, node);
    }
    await(*nodes);
    print("unplugged", *nodes);
    g_object_unref(testbed);
}
