#include "screen/snapshot.h"

#include <climits>

#include <gtest/gtest.h>

#include "image/image_reader.h"
#include "image/pictures.h"

namespace tandrel {
namespace {

TEST(Snapshot, ImageSizeKeepsTheShapeWithinTheLimits) {
    const std::tuple<const char*, Size, std::optional<int>, std::optional<int>, Size> rows[] = {
        {"no limits", {1170, 2532}, {}, {}, {1170, 2532}},
        {"the tighter of both counts", {1170, 2532}, 400, 600, {277, 600}},
        {"width is tighter", {1170, 2532}, 200, 600, {200, 433}},
        {"width alone", {1170, 2532}, 585, {}, {585, 1266}},
        {"edge of a landscape screen", {2532, 1170}, {}, 900, {900, 416}},
        {"never enlarged", {100, 200}, 1000, 1000, {100, 200}},
        {"exactly the size", {100, 200}, 100, 200, {100, 200}},
        {"halves round away from zero", {3, 5}, {}, 3, {2, 3}},
        {"a thin picture keeps a pixel", {1, 3000}, {}, 10, {1, 10}},
        {"zero counts as one", {100, 200}, 0, {}, {1, 2}},
        {"negative counts as one", {100, 200}, {}, INT_MIN, {1, 1}},
        {"no screen", {0, 0}, 10, 10, {0, 0}},
    };
    for (const auto& [name, screen, maxWidth, maxEdge, image] : rows)
        EXPECT_EQ(imageSize(screen, maxWidth, maxEdge), image) << name;
}

TEST(Snapshot, AFullSizePictureIsTheSamePixels) {
    const PixelBuffer frame = pictures::noise(90, 160);
    EXPECT_TRUE(scaledPicture(frame, 90, 200).sharesPixelsWith(frame));
    EXPECT_FALSE(scaledPicture(frame, 89, {}).sharesPixelsWith(frame));
}

TEST(Snapshot, EncodesInTheFormatAndSizeAskedFor) {
    const PixelBuffer frame = pictures::textLike(300, 650);
    const auto png = encodeSnapshot(frame, {.maxWidth = 150});
    const auto jpeg = encodeSnapshot(frame, {.format = ImageFormat::jpeg, .maxEdge = 325});
    ASSERT_TRUE(png && jpeg);
    EXPECT_EQ((*png)[1], 'P');
    EXPECT_EQ((*jpeg)[1], 0xd8);
    for (const auto& file : {*png, *jpeg}) {
        const auto image = decodeImage(file).value();
        EXPECT_EQ(pictures::sizeOf(image), std::pair(150, 325));
    }
}

TEST(Snapshot, ThumbnailsHaveSidesThatAPictureCanHave) {
    const PixelBuffer frame = pictures::noise(90, 160);
    for (const auto& [width, height] : {std::pair{0, 10}, {10, 0}, {-1, -1}, {INT_MAX, 1}}) {
        EXPECT_FALSE(thumbnailOf(frame, width, height)) << width << "x" << height;
    }
    EXPECT_EQ(thumbnailOf(frame, 90, 195)->size(), 17550u);
    EXPECT_FALSE(thumbnailOf(PixelBuffer(), 90, 195));
    EXPECT_FALSE(encodeSnapshot(PixelBuffer(), {.maxEdge = 10}));
}

}  // namespace
}  // namespace tandrel
