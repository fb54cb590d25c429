#include "platform/linux/udev_usb_registry.h"

#include <fstream>

#include <gtest/gtest.h>

#include "support/child_program.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

// The registry's answer about a device tree, in the description of umockdev(1).
std::string devicesOf(const std::string& tree) {
    const TemporaryFolder folder;
    const std::string file = folder.path() / "tree.umockdev";
    std::ofstream(file) << tree;
    return runProgramToEnd({"/usr/bin/umockdev-run", "--device", file, "--",
                            TANDREL_BIN_DIR "/print_usb_devices"},
                           {{"ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0"}})
        .output;
}

constexpr const char* kTree = R"(P: /devices/usb1/1-1
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
)";

TEST(UdevUsbRegistry, ListsWhatIsPluggedInByWhatItSaysOfItself) {
    EXPECT_EQ(devicesOf(kTree), "1452 <iPhone>\n65535 <>\n");
}

TEST(UdevUsbRegistry, IsEmptyWithoutDevices) { EXPECT_EQ(devicesOf(""), ""); }

}  // namespace
}  // namespace tandrel
