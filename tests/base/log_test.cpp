#include "base/log.h"

#include <cstdlib>
#include <fstream>
#include <thread>

#include <gmock/gmock.h>

#include "base/file.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

class LogTest : public testing::Test {
 protected:
    ~LogTest() override { AppLog::setShared(nullptr); }
    std::string content() const { return readFile(file_, 10'000'000).value_or("none"); }

    TemporaryFolder folder_;
    const std::filesystem::path file_ = folder_.path() / "tandrel/Tandrel.log";
};

TEST_F(LogTest, OneCallIsOneLineInTheFileAndOnStandardError) {
    AppLog::setShared(std::make_shared<AppLog>(file_));
    testing::internal::CaptureStderr();
    log("two\nlines\r");
    AppLog::setShared(nullptr);
    const char* line = "\\[[0-9]{4}-[0-9]{2}-[0-9]{2}T[0-9]{2}:[0-9]{2}:[0-9]{2}\\] two lines \n";
    EXPECT_THAT(content(), testing::MatchesRegex(line));
    EXPECT_THAT(testing::internal::GetCapturedStderr(), testing::MatchesRegex(line));
}

TEST_F(LogTest, LinesOfOneThreadKeepTheirOrder) {
    AppLog appLog(file_);
    const auto write = [&](char name) {
        for (char digit = '0'; digit <= '9'; ++digit) appLog.write({name, digit, '\n'});
    };
    std::thread other(write, 'a');
    write('b');
    other.join();
    appLog.flush();
    std::string a;
    std::string b;
    std::ifstream lines(file_);
    for (std::string line; std::getline(lines, line);) (line[0] == 'a' ? a : b) += line[1];
    EXPECT_EQ(a, "0123456789");
    EXPECT_EQ(b, "0123456789");
}

TEST_F(LogTest, AFileIsStartedAfreshOnlyBeyondTheLimit) {
    std::filesystem::create_directories(file_.parent_path());
    for (const std::size_t size : {2'000'000U, 2'000'001U}) {
        std::ofstream(file_, std::ios::trunc) << std::string(size, 'x');
        AppLog appLog(file_);
        appLog.write("line\n");
        appLog.flush();
        EXPECT_EQ(content().size(), size == 2'000'000U ? 2'000'005U : 5U);
    }
}

TEST_F(LogTest, NothingIsMadeBeforeTheFirstLine) {
    {
        AppLog appLog(file_);
    }
    EXPECT_FALSE(std::filesystem::exists(file_.parent_path()));
}

TEST_F(LogTest, WithoutAFileLinesAreOnlyLost) {
    std::filesystem::create_directories(file_);
    AppLog appLog(file_);
    appLog.write("line\n");
    appLog.flush();
    EXPECT_TRUE(std::filesystem::is_empty(file_));
}

TEST(LocalTimestamp, IsTheTimeOfTheZone) {
    const auto moment = WallTime(std::chrono::seconds(1'794'678'080));  // 2026-11-14 17:41:20 UTC
    ::setenv("TZ", "UTC", 1);
    ::tzset();
    EXPECT_EQ(localTimestamp(moment), "2026-11-14T17:41:20");
    ::setenv("TZ", "ABC-5:30", 1);
    ::tzset();
    EXPECT_EQ(localTimestamp(moment), "2026-11-14T23:11:20");
    ::unsetenv("TZ");
    ::tzset();
}

}  // namespace
}  // namespace tandrel
