#include "platform/virtual/hid_report_map.h"

#include <random>

#include <gmock/gmock.h>

#include "platform/virtual/virtual_support.h"

namespace tandrel {
namespace {

using test::hex;

constexpr std::uint32_t kX = 0x10030;
constexpr std::uint32_t kY = 0x10031;
constexpr std::uint32_t kWheel = 0x10038;

HidReportMap map() { return *HidReportMap::parse(test::keyboardAndPointers()); }

TEST(HidReportMap, KnowsTheLengthOfEachReport) {
    std::vector<std::size_t> lengths;
    for (std::uint8_t id = 1; id <= 5; ++id) lengths.push_back(map().reportBytes(id));
    EXPECT_THAT(lengths, testing::ElementsAre(8, 5, 4, 2, 0));
}

// Usage and value of each field that is not zero, in the order of the report.
using Values = std::vector<std::pair<std::uint32_t, int>>;
Values nonZero(std::uint8_t id, std::string_view report) {
    Values values;
    for (const HidValue& value : map().decode(id, hex(report))) {
        if (value.value != 0) values.emplace_back(value.usage, value.value);
    }
    return values;
}

TEST(HidReportMap, DecodesReportsWithoutNullValuesAndUnknownReports) {
    const std::tuple<std::uint8_t, const char*, Values> rows[] = {
        {1, "02 00 0b 00 00 00 00 00", {{0x700E1, 1}, {0x7000B, 1}}},
        {1, "00 ff 00 00 00 00 00 65", {{0x70065, 1}}},
        {2, "00 00 40 ff 7f", {{kX, 16384}, {kY, 32767}}},
        {3, "01 81 7f ff", {{0x90001, 1}, {kX, -127}, {kY, 127}, {kWheel, -1}}},
        {4, "23 02", {{0xC0223, 1}}},
        {1, "00 00 66 00 00 00 00 00", {}},  // past the key usages
        {2, "00 00 80 00 00", {}},           // X past its maximum
        {3, "00 80 00 00", {}},              // -128 below the minimum
        {4, "00 04", {}},
        {2, "01 00 00 00", {}},  // a byte short
        {9, "01 00 00 00", {}},
    };
    for (const auto& [id, report, values] : rows) EXPECT_EQ(nonZero(id, report), values) << report;
}

TEST(HidReportMap, PushedStateComesBack) {
    // 8 bits of X, then push, 16 bits of Y, pop, and again 8 bits of wheel.
    const auto read = HidReportMap::parse(
        hex("05 01 85 07 15 00 25 7f 75 08 95 01 09 30 81 02 a4 75 10 09 31 81 02 b4 09 38 81 02"));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->reportBytes(7), 4u);
    EXPECT_EQ(read->decode(7, hex("01 02 00 03")).back().value, 3);
}

// The largest number there is once made the range endless.
TEST(HidReportMap, RangeMayEndAtTheLargestUsage) {
    const auto read =
        HidReportMap::parse(hex("1b fe ff ff ff 2b ff ff ff ff 15 00 25 01 75 01 95 02 81 02"));
    ASSERT_TRUE(read);
    EXPECT_EQ(read->inputs().at(0).usages, (std::vector<std::uint32_t>{0xFFFFFFFE, 0xFFFFFFFF}));
}

TEST(HidReportMap, RefusesWhatItCannotTrust) {
    // The error is what follows "report map, byte ".
    const std::tuple<const char*, const char*, std::string> rows[] = {
        {"cut off", "05", "0: the last item is cut off"},
        {"long item", "fe 01 00 00", "0: long items are not in use"},
        {"report id 0", "85 00", "0: a report id is from 1 to 255"},
        {"no size", "95 01 81 02", "2: a field has no size"},
        {"33 bits", "75 21 95 01 81 02", "4: a field has no size"},
        {"long report", "75 20 95 11 81 02", "4: a report is too long"},
        {"endless report", "75 20 97 ff ff ff ff 81 02", "7: a report is too long"},
        {"end without begin", "c0", "0: a collection ends that did not begin"},
        {"begin without end", "a1 01", "2: a collection does not end"},
        {"pop without push", "b4", "0: pop without push"},
        {"range backwards", "19 05 29 01", "2: a usage range ends before it begins"},
        {"huge range", "1b 00 00 00 00 2b ff ff ff ff", "5: too many usages"},
        {"range without start", "29 05", "0: a usage maximum without a minimum"},
    };
    for (const auto& [name, bytes, error] : rows) {
        const auto read = HidReportMap::parse(hex(bytes));
        ASSERT_FALSE(read) << name;
        EXPECT_EQ(read.error().message, "report map, byte " + error) << name;
    }
    EXPECT_FALSE(HidReportMap::parse(Bytes(4097, 0xC0)));
}

TEST(HidReportMap, SurvivesChangedBytes) {
    std::minstd_rand random(1);
    const Bytes report(64, 0xA5);
    for (int round = 0; round < 20'000; ++round) {
        Bytes bytes = test::keyboardAndPointers();
        for (int change = 0; change < 4; ++change) {
            bytes[random() % bytes.size()] = static_cast<std::uint8_t>(random());
        }
        bytes.resize(random() % (bytes.size() + 1));
        const auto read = HidReportMap::parse(bytes);
        if (!read) continue;
        for (std::uint8_t id = 0; id < 8; ++id) {
            EXPECT_LE(read->decode(id, report).size(), 8u * 64u);
        }
    }
}

}  // namespace
}  // namespace tandrel
