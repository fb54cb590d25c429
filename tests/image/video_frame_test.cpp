#include "image/video_frame.h"

#include <algorithm>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "image/jpeg_writer.h"
#include "image/pictures.h"

namespace tandrel {
namespace {

using Layout = VideoForm::Layout;
using Colours = VideoForm::Colours;

constexpr int kPaddedBytes = 12;

// A frame of one colour, red in the given standard, whose rows are padded with what is no picture.
Bytes redFrame(const VideoForm& form) {
    const bool is709 = form.colours == Colours::bt709;
    const std::uint8_t y = is709 ? 63 : 81;
    const std::uint8_t u = is709 ? 102 : 90;
    constexpr std::uint8_t kV = 240;
    std::vector<std::uint8_t> pattern;
    if (form.layout == Layout::yuyv) pattern = {y, u, y, kV};
    if (form.layout == Layout::nv12) pattern = {y};
    if (form.layout == Layout::bgr) pattern = {0, 0, 255};
    Bytes frame(form.frameBytes(), 0x55);
    const auto fill = [&](int row, const std::vector<std::uint8_t>& bytes, std::size_t count) {
        const auto at = static_cast<std::size_t>(row) * static_cast<std::size_t>(form.strideBytes);
        for (std::size_t i = 0; i < count; ++i) frame[at + i] = bytes[i % bytes.size()];
    };
    const auto used = static_cast<std::size_t>(form.strideBytes - kPaddedBytes);
    for (int row = 0; row < form.height; ++row) fill(row, pattern, used);
    if (form.layout != Layout::nv12) return frame;
    for (int row = 0; row < (form.height + 1) / 2; ++row) fill(form.height + row, {u, kV}, used);
    return frame;
}

bool isRed(const PixelBuffer& picture, int x, int y) {
    const auto colour = pictures::colourAt(picture, x, y);
    return colour.red > 250 && colour.green < 5 && colour.blue < 5;
}

Bytes jpegFrame(int width = 64, int height = 48) {
    const PixelBuffer picture = pictures::textLike(width, height);
    return *withPixels(picture, [](const Pixels& pixels) { return encodeJpeg(pixels, 90); });
}

std::string errorOf(const Bytes& bytes, VideoForm form = {.layout = Layout::mjpeg}) {
    const auto picture = pictureOf(form, bytes);
    return picture ? "a picture" : picture.error().message;
}

TEST(VideoFrame, TurnsEveryLayoutIntoPixelsWhateverTheStride) {
    const std::pair<const char*, VideoForm> rows[] = {
        {"YUYV", {Layout::yuyv, 30, 20, 60 + kPaddedBytes}},
        {"YUYV, new colours", {Layout::yuyv, 30, 20, 60 + kPaddedBytes, Colours::bt709}},
        {"NV12", {Layout::nv12, 30, 20, 30 + kPaddedBytes}},
        {"NV12, odd rows", {Layout::nv12, 30, 21, 30 + kPaddedBytes}},
        {"NV12, new colours", {Layout::nv12, 30, 20, 30 + kPaddedBytes, Colours::bt709}},
        {"BGR", {Layout::bgr, 31, 20, 93 + kPaddedBytes}},
    };
    for (const auto& [name, form] : rows) {
        const Bytes frame = redFrame(form);
        const auto picture = pictureOf(form, frame);
        ASSERT_TRUE(picture) << name << ": " << picture.error().message;
        EXPECT_EQ(pictures::sizeOf(*picture), std::pair(form.width, form.height)) << name;
        for (int y = 0; y < picture->height(); ++y) {
            for (int x = 0; x < picture->width(); ++x) {
                ASSERT_TRUE(isRed(*picture, x, y)) << name << " at " << x << "," << y;
            }
        }
        EXPECT_FALSE(pictureOf(form, std::span(frame).first(frame.size() - 1))) << name;
    }
}

TEST(VideoFrame, BelievesAStrideOnlyWhereRowsFit) {
    constexpr VideoForm kForm{Layout::yuyv, 640, 480, 0};
    const std::pair<std::uint32_t, int> rows[] = {
        {0, 1280}, {640, 1280}, {1280, 1280}, {1536, 1536}, {1280 * 480, 1280}, {0xffffffff, 1280},
    };
    for (const auto& [named, taken] : rows) {
        EXPECT_EQ(kForm.withStride(named).strideBytes, taken) << named;
    }
    EXPECT_EQ(errorOf(Bytes(640 * 480 * 2), {Layout::yuyv, 640, 480, 640}),
              "rows of 640 bytes hold no 640 pixels");
    EXPECT_EQ(errorOf(Bytes(100), {Layout::bgr, 0, 480, 640}),
              "the grabber sent a picture of 0 x 480 pixels");
}

TEST(VideoFrame, DecodesMotionJpegAsCamerasWriteIt) {
    const Bytes whole = jpegFrame();
    Bytes padded = whole;
    padded.resize(whole.size() + 4096);
    Bytes stray = whole;
    stray.insert(stray.end() - 2, {0x12, 0x34});
    // Motion JPEG leaves out the tables that all its pictures share (marker ff c4, then a length).
    Bytes bare = whole;
    constexpr std::uint8_t kTables[] = {0xff, 0xc4};
    for (auto at = bare.begin(); (at = std::search(bare.begin(), bare.end(), std::begin(kTables),
                                                   std::end(kTables))) != bare.end();) {
        bare.erase(at, at + 2 + (at[2] << 8 | at[3]));
    }
    ASSERT_LT(bare.size(), whole.size());
    for (const Bytes& frame : {whole, padded, stray, bare}) {
        const auto picture = pictureOf({.layout = Layout::mjpeg}, frame);
        ASSERT_TRUE(picture) << picture.error().message;
        EXPECT_EQ(pictures::sizeOf(*picture), std::pair(64, 48));
        EXPECT_TRUE(pictures::sameColours(*picture, *pictureOf({.layout = Layout::mjpeg}, whole)));
    }
}

TEST(VideoFrame, ShowsNoHalfPictureOfADamagedFrame) {
    const Bytes whole = jpegFrame(640, 480);
    for (const std::size_t percent : {0, 1, 10, 50, 90, 99}) {
        const Bytes cut(whole.begin(),
                        whole.begin() + static_cast<std::ptrdiff_t>(whole.size() * percent / 100));
        EXPECT_TRUE(errorOf(cut).starts_with("the grabber sent a damaged frame: ")) << percent;
        Bytes marked = cut;  // the end mark alone makes no whole picture
        marked.insert(marked.end(), {0xff, 0xd9});
        EXPECT_TRUE(errorOf(marked).starts_with("the grabber sent a damaged frame: ")) << percent;
    }
    Bytes large = whole;
    constexpr std::uint8_t kStartOfFrame[] = {0xff, 0xc0};
    const auto head =
        std::search(large.begin(), large.end(), std::begin(kStartOfFrame), std::end(kStartOfFrame));
    ASSERT_NE(head, large.end());
    std::fill_n(head + 5, 4, 0x70);
    EXPECT_EQ(errorOf(large), "the grabber sent a picture of 28784 x 28784 pixels");
}

}  // namespace
}  // namespace tandrel
