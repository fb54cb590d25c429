#include <gtest/gtest.h>

#include "support/child_program.h"

namespace tandrel {
namespace {

// Under a simulated device tree, which a program of its own has to be started with.
TEST(Udev, TellsOfUsbDevicesAndVideoNodesThatComeAndGo) {
    const auto seen = runProgramToEnd(
        {"/usr/bin/umockdev-wrapper", TANDREL_BIN_DIR "/plug_devices"},
        {{"PATH", "/usr/bin:/bin"}, {"ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0"}});
    EXPECT_EQ(seen.output,
              "before:\n"
              "plugged in: </dev/video0|pci-0000:00:14.0-usb-0:1:1.0|USB Video: USB Video>"
              " </dev/video1||USB Video: USB Video> 1452 <iPhone> 65535 <>\n"
              "unplugged: 1452 <iPhone> 65535 <>\n");
}

}  // namespace
}  // namespace tandrel
