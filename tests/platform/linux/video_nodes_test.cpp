#include "platform/linux/video_nodes.h"

#include <gtest/gtest.h>

#include "support/child_program.h"

namespace tandrel {
namespace {

TEST(VideoNodes, FollowsPluggingAndUnplugging) {
    const auto seen = runProgramToEnd(
        {"/usr/bin/umockdev-wrapper", TANDREL_BIN_DIR "/plug_video_nodes"},
        {{"PATH", "/usr/bin:/bin"}, {"ASAN_OPTIONS", "verify_asan_link_order=0:detect_leaks=0"}});
    EXPECT_EQ(seen.output,
              "before:\n"
              "plugged in: </dev/video0|pci-0000:00:14.0-usb-0:1:1.0|USB Video: USB Video>"
              " </dev/video1||USB Video: USB Video>\n"
              "unplugged:\n");
}

}  // namespace
}  // namespace tandrel
