#include "payments/payment_log.h"

#include <fstream>
#include <thread>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "base/file.h"
#include "base/json.h"
#include "payments/approvals.h"
#include "payments/printed.h"
#include "support/environment_variable.h"
#include "support/manual_clock.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

class PaymentLogTest : public testing::Test {
 protected:
    const TemporaryFolder folder_;
    const std::filesystem::path file_ = folder_.path() / "deep" / "er" / "approvals.jsonl";
    ManualClock clock_;  // at 2025-12-18T00:00:00Z

    std::string content() { return readFile(file_, 1 << 20).value_or("none"); }
    void write(const std::string& text) {
        std::filesystem::create_directories(file_.parent_path());
        std::ofstream(file_, std::ios::binary) << text;
    }
    std::string print(ApprovalsFormat format, int status = 0) {
        const auto [end, text] =
            printed([&](std::FILE* out) { return printApprovals(file_, format, out); });
        EXPECT_EQ(end, status);
        return text;
    }
};

TEST_F(PaymentLogTest, WritesOneSortedLineForEachEvent) {
    PaymentLog log(file_, clock_);
    testing::internal::CaptureStderr();
    log.record("asked", "tap “Pay”: €5", "a payment button (\"Pay\")");
    clock_.advance(std::chrono::seconds(3671));
    log.record("denied", "two\nlines\xFF");
    log.flush();
    EXPECT_EQ(content(),
              "{\"at\":\"2025-12-18T00:00:00Z\",\"detail\":\"tap “Pay”: €5\",\"event\":\"asked\","
              "\"why\":\"a payment button (\\\"Pay\\\")\"}\n"
              "{\"at\":\"2025-12-18T01:01:11Z\",\"detail\":\"two\\nlines\uFFFD\","
              "\"event\":\"denied\"}\n");
    EXPECT_EQ(std::filesystem::status(file_).permissions(), std::filesystem::perms(0600));
    const std::string app = testing::internal::GetCapturedStderr();
    EXPECT_NE(app.find("] payment asked: tap “Pay”: €5 (a payment button (\"Pay\"))\n"), app.npos);
    EXPECT_NE(app.find("] payment denied: two lines"), app.npos);
}

TEST_F(PaymentLogTest, KeepsWhatIsThereAndEndsATornLine) {
    write("{\"torn\":");
    PaymentLog log(file_, clock_);
    log.record("asked", "x");
    log.record("denied", "y");
    log.flush();
    EXPECT_EQ(content(),
              "{\"torn\":\n"
              "{\"at\":\"2025-12-18T00:00:00Z\",\"detail\":\"x\",\"event\":\"asked\"}\n"
              "{\"at\":\"2025-12-18T00:00:00Z\",\"detail\":\"y\",\"event\":\"denied\"}\n");
}

// Two copies of the program, many threads each: every line is whole.
TEST_F(PaymentLogTest, LinesOfTwoWritersNeverMix) {
    constexpr int kThreads = 4;
    constexpr int kLines = 100;
    const std::string detail(3000, 'x');
    {
        PaymentLog one(file_, clock_);
        PaymentLog other(file_, clock_);
        testing::internal::CaptureStderr();
        std::vector<std::jthread> threads;
        for (int i = 0; i < kThreads; ++i) {
            threads.emplace_back([&, i] {
                for (int line = 0; line < kLines; ++line) {
                    (i % 2 ? one : other).record("asked", detail);
                }
            });
        }
    }
    testing::internal::GetCapturedStderr();
    std::ifstream file(file_);
    int whole = 0;
    for (std::string line; std::getline(file, line);) {
        if (!line.empty()) whole += Json::parse(line)["detail"] == detail ? 1 : 0;
    }
    EXPECT_EQ(whole, kThreads * kLines);
}

TEST_F(PaymentLogTest, NoPlaceToWriteHoldsNobodyUp) {
    write("a file where a folder should be");
    PaymentLog blocked(file_ / "approvals.jsonl", clock_);
    blocked.record("asked", "x");
    blocked.flush();
    const auto pipe = folder_.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    PaymentLog unread(pipe, clock_);
    unread.record("asked", "x");
    unread.flush();
    EXPECT_EQ(content(), "a file where a folder should be");
}

TEST_F(PaymentLogTest, PrintsATableNewestLast) {
    const std::string asked =
        R"({"at":"2026-01-31T09:15:00Z","detail":"tap “Pay”: €5","event":"asked","why":"it pays"})";
    const std::string timedOut =
        R"({"at":"2026-01-31T09:15:20Z","detail":"tap “Pay”: €5","event":"timed out"})";
    write(asked + "\n\n" + timedOut + "\n");
    EXPECT_EQ(print(ApprovalsFormat::table),
              "TIME (UTC)            EVENT      WHAT\n"
              "2026-01-31T09:15:00Z  asked      tap “Pay”: €5 (it pays)\n"
              "2026-01-31T09:15:20Z  timed out  tap “Pay”: €5\n");
    EXPECT_EQ(print(ApprovalsFormat::json),
              "{\"approvals\":[\n" + asked + ",\n" + timedOut + "],\"unreadable\":0}\n");
}

TEST_F(PaymentLogTest, PrintsAroundWhatIsNoRecord) {
    const std::string record =
        "{\"at\":\"2026-01-31T09:15:00Z\",\"detail\":\"a\\u001b[2J\\u202eb\",\"event\":\"denied\"}"
        "\n";
    write("{\"at\":\"2026\n[]\n" + record + std::string(200'000, '[') + "\n" +
          "{\"at\":1,\"detail\":\"\",\"event\":\"\"}\n\xFF\xFE\n" + record.substr(0, 40));
    EXPECT_EQ(print(ApprovalsFormat::table),
              "TIME (UTC)            EVENT      WHAT\n"
              "2026-01-31T09:15:00Z  denied     a [2J b\n"
              "6 lines of " +
                  file_.string() + " could not be read.\n");
    const auto json = Json::parse(print(ApprovalsFormat::json));
    EXPECT_EQ(json["unreadable"], 6);
    EXPECT_EQ(json["approvals"].size(), 1u);
}

TEST_F(PaymentLogTest, NothingAskedYet) {
    EXPECT_EQ(print(ApprovalsFormat::table), "No payment has been asked about yet.\n");
    EXPECT_EQ(print(ApprovalsFormat::json), "{\"approvals\":[],\"unreadable\":0}\n");
    std::filesystem::create_directories(file_);
    EXPECT_EQ(print(ApprovalsFormat::table, 1), "");
}

TEST(PaymentLogLocation, IsTheVariableElseTheDataFolder) {
    const EnvironmentVariable data("XDG_DATA_HOME", "/data");
    EXPECT_EQ(PaymentLog::location("Tandrel"), "/data/Tandrel/approvals.jsonl");
    const EnvironmentVariable log("TANDREL_APPROVALS_LOG", "/elsewhere/log");
    EXPECT_EQ(PaymentLog::location("Tandrel"), "/elsewhere/log");
}

}  // namespace
}  // namespace tandrel
