#include "platform/linux/image_capture_devices.h"

#include <fstream>
#include <semaphore>

#include <gmock/gmock.h>

#include "base/file.h"
#include "platform/linux/taken_frames.h"
#include "support/manual_clock.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;
using testing::ElementsAre;
namespace fs = std::filesystem;

constexpr int kLargestName = 64;

// An image of this test is a text file holding its width; anything else is not an image.
Result<PixelBuffer> loadWidth(const fs::path& file) {
    const std::string text = TRY(readFile(file, kLargestName));
    const int width = std::atoi(text.c_str());
    if (width < 1) return fail("this is not an image");
    return PixelBuffer::make(width, 1, nullptr);
}

class ImageCaptureTest : public testing::Test {
 protected:
    fs::path put(const fs::path& name, const std::string& text) {
        const fs::path file = folder_.path() / name;
        fs::create_directories(file.parent_path());
        std::ofstream(file) << text;
        return file;
    }
    fs::path at(const fs::path& name) const { return folder_.path() / name; }

    void sources(std::vector<fs::path> paths) {
        devices_ = std::make_unique<ImageCaptureDevices>(
            ImageCaptureDevices::Options{.paths = std::move(paths), .load = loadWidth}, clock_);
    }
    // One source of this path, opened.
    Result<std::unique_ptr<CaptureSession>> play(const fs::path& path) {
        sources({path});
        return devices_->open(devices_->devices().at(0), frames_.sink());
    }
    // The widths of the next frames, one for each turn of the beat.
    std::vector<int> nextFrames(int count) {
        std::vector<int> widths;
        for (int i = 0; i < count; ++i) {
            widths.push_back(frames_.next().first);
            clock_.advance(100ms);
        }
        return widths;
    }

    TemporaryFolder folder_;
    ManualClock clock_;
    TakenFrames frames_;
    std::unique_ptr<ImageCaptureDevices> devices_;
};

TEST_F(ImageCaptureTest, APathIsAPhoneWhileItExists) {
    sources({put("My iPhone.png", "1"), put("Tour.v2/1.png", "1").parent_path(), at("missing.png"),
             at("./My iPhone.png")});
    const auto found = devices_->devices();
    ASSERT_EQ(found.size(), 2U);
    EXPECT_EQ(found[0].name, "My iPhone");
    EXPECT_EQ(found[0].modelId, "iOS Device (images)");
    EXPECT_EQ(found[1].name, "Tour.v2");
    EXPECT_NE(found[0].id, found[1].id);
    const auto other = devices_->open({"image:/etc/passwd", "", "", true}, frames_.sink());
    ASSERT_FALSE(other);
    EXPECT_EQ(other.error().message, "there is no image source image:/etc/passwd");
    fs::remove(at("My iPhone.png"));
    EXPECT_FALSE(devices_->open(found[0], frames_.sink()));
}

TEST_F(ImageCaptureTest, PluggingAndUnpluggingIsReported) {
    sources({at("phone.png")});
    std::counting_semaphore<> changes(0);
    devices_->setOnDevicesChanged([&] { changes.release(); });
    for (const std::size_t count : {1U, 0U, 1U}) {
        count == 1 ? void(put("phone.png", "1")) : void(fs::remove(at("phone.png")));
        while (!changes.try_acquire()) clock_.advance(ImageCaptureDevices::kLookInterval);
        EXPECT_EQ(devices_->devices().size(), count);
    }
    devices_->setOnDevicesChanged({});
}

TEST_F(ImageCaptureTest, AFolderPlaysItsImagesByNameOverAndOver) {
    put("tour/b.JPG", "2");
    put("tour/a.png", "1");
    put("tour/c.jpeg", "3");
    put("tour/notes.txt", "9");
    const auto session = play(at("tour"));
    EXPECT_THAT(nextFrames(4), ElementsAre(1, 2, 3, 1));
    put("tour/aa.png", "7");
    EXPECT_THAT(nextFrames(5), ElementsAre(2, 3, 1, 7, 2)) << "seen at the next round";
}

TEST_F(ImageCaptureTest, AStillImageComesAgainAndChangesWithItsFile) {
    put("phone.png", "5");
    const auto session = play(at("phone.png"));
    EXPECT_THAT(nextFrames(3), ElementsAre(5, 5, 5));
    fs::rename(put("new", "6"), at("phone.png"));
    frames_.next();  // may have been on its way
    clock_.advance(100ms);
    EXPECT_THAT(nextFrames(2), ElementsAre(6, 6));
}

TEST_F(ImageCaptureTest, AnImageThatBreaksWhileItPlaysMissesItsTurnAndNoneComesAfterTheEnd) {
    put("tour/a.png", "1");
    put("tour/b.png", "junk");
    put("tour/c.png", "3");
    auto session = play(at("tour"));
    EXPECT_EQ(frames_.next().first, 1);
    while (frames_.isEmpty()) clock_.advance(100ms);
    EXPECT_EQ(frames_.next().first, 3);
    session->reset();
    while (!frames_.isEmpty()) frames_.next();
    clock_.advance(1s);
    EXPECT_TRUE(frames_.isEmpty());
}

TEST_F(ImageCaptureTest, WhatCannotBeShownSaysWhichFile) {
    const std::pair<fs::path, std::string> rows[] = {
        {put("notes.png", "hello"),
         "can't show " + at("notes.png").string() + ": this is not an image"},
        {put("big.png", std::string(100, '1')),
         "can't read " + at("big.png").string() + ": it is larger than 64 bytes"},
        {put("empty/readme.txt", "1").parent_path(),
         "there is no PNG or JPEG file in " + at("empty").string()},
        {put("tour/a.png", "x").parent_path(),
         "can't show " + at("tour/a.png").string() + ": this is not an image"},
    };
    for (const auto& [path, error] : rows) EXPECT_EQ(play(path).error().message, error);
}

TEST(ImagePaths, SplitAtColons) {
    using Paths = std::vector<fs::path>;
    EXPECT_EQ(ImageCaptureDevices::parsePaths("a.png:/b/c:x y"), (Paths{"a.png", "/b/c", "x y"}));
    EXPECT_EQ(ImageCaptureDevices::parsePaths(":a::b:"), (Paths{"a", "b"}));
    EXPECT_EQ(ImageCaptureDevices::parsePaths(""), Paths{});
}

}  // namespace
}  // namespace tandrel
