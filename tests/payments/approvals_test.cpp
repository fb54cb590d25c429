#include "payments/approvals.h"

#include <gtest/gtest.h>

#include "base/file.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

std::string line(int number) {
    return R"({"at":"2026-01-31T09:15:00Z","detail":"tap )" + std::to_string(number) +
           R"(","event":"asked"})"
           "\n";
}

TEST(ReadApprovals, GivesTheNewestInTheLogsOrderAndCountsTheRest) {
    const TemporaryFolder folder;
    const auto log = folder.path() / "approvals.jsonl";
    std::string text;
    for (int i = 1; i <= 5; ++i) text += line(i);
    text += "not a record\n\n" + line(6) + R"({"at":"2026-01-31T09)";  // and a torn one
    ASSERT_TRUE(replaceFile(log, text));
    const auto all = readApprovals(log, 100).value();
    EXPECT_EQ(all.newest.size(), 6);
    EXPECT_EQ(all.newest.front().detail, "tap 1");
    EXPECT_EQ(all.older, 0);
    EXPECT_EQ(all.unreadable, 2);
    const auto few = readApprovals(log, 2).value();
    ASSERT_EQ(few.newest.size(), 2);
    EXPECT_EQ(few.newest[0].detail, "tap 5");
    EXPECT_EQ(few.newest[1].detail, "tap 6");
    EXPECT_EQ(few.older, 4);
}

TEST(ReadApprovals, TakesAMissingLogForAnEmptyOneAndNothingElseForALog) {
    const TemporaryFolder folder;
    const auto none = readApprovals(folder.path() / "none.jsonl", 10).value();
    EXPECT_TRUE(none.newest.empty());
    EXPECT_FALSE(readApprovals(folder.path(), 10)) << "a folder is unreadable, not empty";
}

}  // namespace
}  // namespace tandrel
