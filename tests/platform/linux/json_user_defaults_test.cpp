#include "platform/linux/json_user_defaults.h"

#include <fstream>
#include <thread>

#include <fcntl.h>
#include <gmock/gmock.h>
#include <sys/file.h>
#include <sys/stat.h>

#include "base/file.h"
#include "base/file_descriptor.h"
#include "platform/linux/as_nobody.h"
#include "support/manual_clock.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

class JsonUserDefaultsTest : public testing::Test {
 protected:
    void write(const std::string& text) { std::ofstream(file_, std::ios::binary) << text; }
    static std::string read(const fs::path& file) {
        return readFile(file, 2 * JsonUserDefaults::kLargestFile).value_or("");
    }
    static std::string whyNotKept(JsonUserDefaults& defaults) {
        const auto result = defaults.set("paused", false);
        return result ? "kept" : result.error().message;
    }
    fs::path beside(const char* suffix) const { return file_.string() + suffix; }

    TemporaryFolder folder_;
    const fs::path file_ = folder_.path() / "tandrel/settings.json";
    JsonUserDefaults defaults_{file_};
};

TEST_F(JsonUserDefaultsTest, KeepsWhatIsSetBesideWhatWasThere) {
    ASSERT_TRUE(defaults_.set("paused", true));
    write(R"({"paused": true, "link": "usb", "theirs": {"deep": [1, null]}})");
    ASSERT_TRUE(defaults_.set("link", "airplay"));
    EXPECT_EQ(defaults_.boolValue("paused"), true);
    EXPECT_EQ(defaults_.textValue("link"), "airplay");
    EXPECT_EQ(defaults_.textValue("paused"), std::nullopt) << "another type";
    EXPECT_EQ(defaults_.boolValue("link"), std::nullopt);
    EXPECT_EQ(defaults_.boolValue("never set"), std::nullopt);
    EXPECT_THAT(read(file_), HasSubstr("\"deep\": [\n            1,\n            null\n"));
    EXPECT_FALSE(fs::exists(beside(".broken")));
}

TEST_F(JsonUserDefaultsTest, SeesEveryChangeAtOnceHoweverAlikeTheFiles) {
    JsonUserDefaults other(file_);
    for (int i = 0; i < 200; ++i) {
        const std::string value(1, static_cast<char>('a' + i % 26));
        ASSERT_TRUE(other.set("link", value));
        ASSERT_EQ(defaults_.textValue("link"), value) << i;
    }
    fs::remove(file_);
    EXPECT_EQ(defaults_.textValue("link"), std::nullopt);
}

TEST_F(JsonUserDefaultsTest, WritersDoNotLoseEachOthersKeys) {
    constexpr int kEach = 20;
    const auto writeAll = [this](const char* prefix) {
        JsonUserDefaults own(file_);
        for (int i = 0; i < kEach; ++i) {
            ASSERT_TRUE(own.set(prefix + std::to_string(i), true));
        }
    };
    {
        const std::jthread one(writeAll, "a"), two(writeAll, "b");
    }
    for (int i = 0; i < kEach; ++i) {
        EXPECT_EQ(defaults_.boolValue("a" + std::to_string(i)), true) << i;
        EXPECT_EQ(defaults_.boolValue("b" + std::to_string(i)), true) << i;
    }
}

TEST_F(JsonUserDefaultsTest, WhatIsNotSettingsCountsAsEmptyAndIsKept) {
    const std::pair<const char*, std::string> cases[] = {
        {"empty, so nothing is lost", ""},
        {"truncated", R"({"paused": true, "li)"},
        {"not JSON", "paused = true\n"},
        {"an array", "[true]"},
        {"bytes", std::string("\0\xff\xfe{}", 5)},
        {"too deep", std::string(5000, '[')},
        {"huge", std::string(JsonUserDefaults::kLargestFile + 1, ' ')},
    };
    fs::create_directories(file_.parent_path());
    int kept = 0;
    for (const auto& [name, text] : cases) {
        SCOPED_TRACE(name);
        write(text);
        EXPECT_EQ(defaults_.boolValue("paused"), std::nullopt);
        EXPECT_EQ(read(file_), text) << "reading changes nothing";
        ASSERT_TRUE(defaults_.set("paused", true));
        EXPECT_EQ(defaults_.boolValue("paused"), true);
        const std::string number = kept == 0 ? "" : "-" + std::to_string(kept + 1);
        const fs::path copy = beside((".broken" + number).c_str());
        EXPECT_EQ(fs::exists(copy), !text.empty());
        EXPECT_TRUE(read(copy) == text);
        kept += text.empty() ? 0 : 1;
    }
}

TEST_F(JsonUserDefaultsTest, ALinkIsFollowedAndItsBrokenTargetKept) {
    const fs::path target = folder_.path() / "elsewhere.json";
    std::ofstream(target) << "broken";
    fs::create_directories(file_.parent_path());
    fs::create_symlink(target, file_);
    ASSERT_TRUE(defaults_.set("paused", true));
    EXPECT_TRUE(fs::is_symlink(file_));
    EXPECT_THAT(read(target), HasSubstr("\"paused\": true"));
    EXPECT_EQ(read(target.string() + ".broken"), "broken");
}

TEST_F(JsonUserDefaultsTest, WhereNothingCanBeKeptTheErrorNamesTheFile) {
    fs::create_directories(file_);
    EXPECT_EQ(defaults_.boolValue("paused"), std::nullopt);
    EXPECT_EQ(whyNotKept(defaults_), "can't read " + file_.string() + ": it is a folder");

    fs::remove(file_);
    ASSERT_EQ(::mkfifo(file_.c_str(), 0600), 0);
    EXPECT_EQ(defaults_.boolValue("paused"), std::nullopt);
    EXPECT_EQ(whyNotKept(defaults_), "can't read " + file_.string() + ": it is not a regular file");

    fs::remove(file_);
    fs::remove_all(file_.parent_path());
    std::ofstream(file_.parent_path()) << "a file where the folder should be";
    EXPECT_THAT(whyNotKept(defaults_), HasSubstr(file_.string()));
}

TEST_F(JsonUserDefaultsTest, AClosedFileOrFolderStaysAsItWas) {
    ASSERT_TRUE(defaults_.set("paused", true));
    const std::string before = read(file_);
    fs::permissions(folder_.path(), fs::perms(0755));
    fs::permissions(file_.parent_path(), fs::perms(0555));
    fs::permissions(file_, fs::perms(0000));
    {
        const AsNobody nobody;
        JsonUserDefaults fresh(file_);
        EXPECT_EQ(fresh.boolValue("paused"), std::nullopt);
        EXPECT_THAT(whyNotKept(fresh), HasSubstr("Permission denied"));
    }
    fs::permissions(file_.parent_path(), fs::perms(0755));
    fs::permissions(file_, fs::perms(0644));
    EXPECT_EQ(read(file_), before);
    EXPECT_FALSE(fs::exists(beside(".broken")));
}

TEST_F(JsonUserDefaultsTest, ALockThatIsNeverGivenBackIsAnErrorInTheEnd) {
    fs::create_directories(file_.parent_path());
    const FileDescriptor lock(::open(beside(".lock").c_str(), O_CREAT | O_RDWR, 0600));
    ASSERT_EQ(::flock(lock.get(), LOCK_EX), 0);
    ManualClock clock(ManualClock::Sleep::passes);
    JsonUserDefaults waiting(file_, clock);
    EXPECT_THAT(whyNotKept(waiting), HasSubstr("another program holds"));
    EXPECT_FALSE(fs::exists(file_));
}

TEST_F(JsonUserDefaultsTest, WhatCouldNotBeReadAgainIsRefused) {
    EXPECT_FALSE(defaults_.set("link", "\xff"));
    EXPECT_FALSE(defaults_.set("\xff", true));
    EXPECT_FALSE(defaults_.set("link", std::string(JsonUserDefaults::kLargestFile, 'x')));
    EXPECT_FALSE(fs::exists(file_));
}

}  // namespace
}  // namespace tandrel
