#include "base/file.h"

#include <filesystem>
#include <fstream>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "support/temporary_folder.h"

namespace tandrel {
namespace {

using testing::HasSubstr;
namespace fs = std::filesystem;

class FileTest : public testing::Test {
 protected:
    fs::path put(const fs::path& name, const std::string& text) {
        const fs::path file = folder_.path() / name;
        std::ofstream(file, std::ios::binary) << text;
        return file;
    }
    std::size_t filesInFolder() const {
        return static_cast<std::size_t>(
            std::distance(fs::directory_iterator(folder_.path()), fs::directory_iterator()));
    }
    static std::string readError(const fs::path& file, std::size_t limit = 100) {
        const auto text = readFile(file, limit);
        return text ? "read: " + *text : text.error().message;
    }
    static int modeOf(const fs::path& file) {
        return static_cast<int>(fs::status(file).permissions());
    }

    TemporaryFolder folder_;
};

TEST_F(FileTest, ReadsUpToTheLimit) {
    const std::string bytes("a\0\xff\n", 4);
    const fs::path file = put("a", bytes);
    EXPECT_EQ(readFile(file, 4), bytes);
    EXPECT_EQ(readError(file, 3), "can't read " + file.string() + ": it is larger than 3 bytes");
    EXPECT_EQ(readFile(put("empty", ""), 0), "");
}

TEST_F(FileTest, WhatCannotBeReadSaysWhy) {
    const fs::path pipe = folder_.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    EXPECT_THAT(readError(folder_.path()), HasSubstr("it is a folder"));
    EXPECT_THAT(readError(pipe), HasSubstr("it is not a regular file"));
    EXPECT_THAT(readError("/dev/zero"), HasSubstr("it is not a regular file"));
    EXPECT_THAT(readError(folder_.path() / "none"), HasSubstr("No such file or directory"));
}

TEST_F(FileTest, ReplacingKeepsTheModeAndLeavesNothingBeside) {
    const fs::path file = put("a", "old");
    fs::permissions(file, fs::perms(0640));
    ASSERT_TRUE(replaceFile(file, "new"));
    EXPECT_EQ(readFile(file, 100), "new");
    EXPECT_EQ(modeOf(file), 0640);
    EXPECT_EQ(filesInFolder(), 1U);
}

TEST_F(FileTest, ANewFileIsTheOwnersAloneAndItsFoldersAreMade) {
    const fs::path file = folder_.path() / "x/y/a";
    ASSERT_TRUE(replaceFile(file, "new"));
    EXPECT_EQ(modeOf(file), 0600);
}

TEST_F(FileTest, ReplacingFollowsLinks) {
    const fs::path target = put("target", "old");
    const fs::path link = folder_.path() / "link";
    fs::create_symlink("target", link);
    ASSERT_TRUE(replaceFile(link, "new"));
    EXPECT_TRUE(fs::is_symlink(link));
    EXPECT_EQ(readFile(target, 100), "new");

    const fs::path dangling = folder_.path() / "dangling";
    fs::create_symlink("missing/file", dangling);
    ASSERT_TRUE(replaceFile(dangling, "new"));
    EXPECT_EQ(readFile(folder_.path() / "missing/file", 100), "new");

    fs::create_symlink("ring", folder_.path() / "ring");
    EXPECT_FALSE(replaceFile(folder_.path() / "ring", "new"));
}

TEST_F(FileTest, AFailedReplacementLeavesEverythingAsItWas) {
    fs::create_directories(folder_.path() / "folder/inside");
    EXPECT_FALSE(replaceFile(folder_.path() / "folder", "new"));
    EXPECT_FALSE(replaceFile(put("file", "text") / "below", "new"));
    EXPECT_EQ(readFile(folder_.path() / "file", 100), "text");
    EXPECT_EQ(filesInFolder(), 2U);
}

TEST_F(FileTest, AFileThatOthersWriteIsReplacedOnlyWhileItHoldsWhatIsExpected) {
    const fs::path file = put("a", "old");
    fs::permissions(file, fs::perms(0640));
    EXPECT_EQ(replaceFileHolding(file, "older", "new"), Replacement::changedMeanwhile);
    EXPECT_EQ(replaceFileHolding(file, std::nullopt, "new"), Replacement::changedMeanwhile);
    EXPECT_EQ(readFile(file, 100), "old");
    EXPECT_EQ(replaceFileHolding(file, "old", "new"), Replacement::done);
    EXPECT_EQ(readFile(file, 100), "new");
    EXPECT_EQ(modeOf(file), 0640);

    const fs::path missing = folder_.path() / "x/b";
    EXPECT_EQ(replaceFileHolding(missing, "old", "new"), Replacement::changedMeanwhile);
    EXPECT_EQ(replaceFileHolding(missing, std::nullopt, "new"), Replacement::done);
    EXPECT_EQ(readFile(missing, 100), "new");
    EXPECT_EQ(filesInFolder(), 2U);
}

TEST_F(FileTest, ANameWithoutFolderIsInTheCurrentOne) {
    const fs::path before = fs::current_path();
    fs::current_path(folder_.path());
    const auto replaced = replaceFile("plain", "text");
    fs::current_path(before);
    EXPECT_TRUE(replaced) << (replaced ? "" : replaced.error().message);
    EXPECT_EQ(readFile(folder_.path() / "plain", 100), "text");
}

}  // namespace
}  // namespace tandrel
