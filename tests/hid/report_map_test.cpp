#include "hid/report_map.h"

#include <fmt/format.h>
#include <fmt/ranges.h>
#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(ReportMap, IsThisDescriptorByteForByte) {
    EXPECT_EQ(fmt::format("{:02x}", fmt::join(HIDReportMap::descriptor, " ")),
              // keyboard
              "05 01 09 06 a1 01 85 01 05 07 19 e0 29 e7 15 00 25 01 75 01 95 08 81 02 95 01 75 08 "
              "81 01 95 06 75 08 15 00 25 65 05 07 19 00 29 65 81 00 95 05 75 01 05 08 19 01 29 05 "
              "91 02 95 01 75 03 91 01 c0 "
              // absolute pointer
              "05 01 09 02 a1 01 85 02 09 01 a1 00 05 09 19 01 29 03 15 00 25 01 95 03 75 01 81 02 "
              "95 01 75 05 81 01 05 01 09 30 09 31 16 00 00 26 ff 7f 75 10 95 02 81 02 c0 c0 "
              // relative mouse
              "05 01 09 02 a1 01 85 03 09 01 a1 00 05 09 19 01 29 03 15 00 25 01 95 03 75 01 81 02 "
              "95 01 75 05 81 01 05 01 09 30 09 31 09 38 15 81 25 7f 75 08 95 03 81 06 c0 c0 "
              // consumer control
              "05 0c 09 01 a1 01 85 04 15 00 26 ff 03 19 00 2a ff 03 75 10 95 01 81 00 c0");
}

TEST(ReportMap, KnowsReportIdsOneToFour) {
    for (int id = 0; id < 256; ++id) {
        const auto expected =
            id >= 1 && id <= 4 ? std::optional(static_cast<ReportID>(id)) : std::nullopt;
        EXPECT_EQ(parseReportID(static_cast<std::uint8_t>(id)), expected) << id;
    }
}

}  // namespace
}  // namespace tandrel
