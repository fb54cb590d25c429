#include <filesystem>

#include <gtest/gtest.h>

#include "image/image_reader.h"
#include "screen/mirror_fixture.h"

namespace tandrel {
namespace {

// The tools that read or write pictures, with files that are odd, broken or made to harm.
class MirrorFiles : public MirrorFixture {
 protected:
    static std::string odd(const std::string& name) {
        return TANDREL_SOURCE_DIR "/tests/data/pictures/" + name;
    }
};

TEST_F(MirrorFiles, OddPicturesAreReadAsTheStillTheyShow) {
    for (const char* name : {"sixteen-bits.png", "animated.png"}) {
        SCOPED_TRACE(name);
        EXPECT_EQ(run({"ocr", odd(name)}), 0) << err.str();
        EXPECT_EQ(result()[0]["w"], 40);
        EXPECT_EQ(result()[0]["h"], 90);
        EXPECT_EQ(run({"detect-rect", odd(name)}), 0);
        EXPECT_EQ(run({"usb-capture", file("out.png"), "--image", odd(name), "--max", "45"}), 0);
        const auto saved = readImage(file("out.png")).value();
        EXPECT_EQ(saved.height(), 45);
        EXPECT_EQ(pictures::colourAt(saved, 10, 22), (pictures::Colour{0x20, 0x60, 0xc0}));
    }
}

TEST_F(MirrorFiles, PicturesThatCannotBeReadWholeAreRefusedByEveryTool) {
    for (const char* name : {"animated.gif", "animated.webp", "print-colours.jpg", "cut.png",
                             "cut.jpg", "declared-100000x100000.png", "declared-65535x65535.jpg",
                             "declared-0x90.png", "declared-40x0.jpg"}) {
        const std::string path = odd(name);
        ASSERT_TRUE(std::filesystem::exists(path)) << path;
        const std::string sentence = "cannot read " + path;
        EXPECT_EQ(failure({"ocr", path}), sentence);
        EXPECT_EQ(failure({"detect-rect", path}), sentence);
        EXPECT_EQ(failure({"usb-capture", file("out.png"), "--image", path}), sentence);
        EXPECT_EQ(failure({"usb-serve", "--port", "0", "--image", path}), sentence);
    }
    EXPECT_FALSE(std::filesystem::exists(file("out.png")));
}

TEST_F(MirrorFiles, AnOutputThatCannotBeWrittenLeavesNothingBehind) {
    const std::string in = odd("animated.png");
    std::filesystem::create_directory(file("folder.png"));
    ASSERT_TRUE(replaceFile(file("text"), "hello"));
    for (const std::string& path :
         {file("folder.png"), file("no/such/folder.png"), file("text/a.png"),
          std::string("/proc/a.png"), file(std::string(300, 'x') + ".png"),
          std::string("/dev/full"), std::string()}) {
        EXPECT_EQ(failure({"usb-capture", path, "--image", in}), "cannot write " + path);
    }
    EXPECT_FALSE(std::filesystem::exists(file("no")));
    EXPECT_EQ(readFile(file("text"), 100), "hello");
    EXPECT_TRUE(std::filesystem::is_empty(file("folder.png")));
}

TEST_F(MirrorFiles, AnOutputReplacesTheOldFileWholeAndGoesIntoADevice) {
    ASSERT_TRUE(replaceFile(file("kept.png"), std::string(100'000, 'x')));
    std::filesystem::create_symlink("kept.png", file("link.png"));
    EXPECT_EQ(run({"usb-capture", file("link.png"), "--image", odd("animated.png")}), 0);
    EXPECT_TRUE(std::filesystem::is_symlink(file("link.png")));
    EXPECT_TRUE(readImage(file("kept.png")));
    EXPECT_EQ(run({"usb-capture", "/dev/null", "--image", odd("animated.png")}), 0);
    EXPECT_TRUE(std::filesystem::is_character_file("/dev/null"));
}

}  // namespace
}  // namespace tandrel
