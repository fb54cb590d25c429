#include "image/jpeg_writer.h"

#include <gtest/gtest.h>

#include "image/image_reader.h"
#include "image/pictures.h"

namespace tandrel {
namespace {

Bytes encoded(const PixelBuffer& picture, int quality) {
    return withPixels(picture, [&](const Pixels& pixels) { return encodeJpeg(pixels, quality); })
        .value_or(Bytes{});
}

TEST(JpegWriter, KeepsSizeAndColours) {
    const PixelBuffer picture = pictures::padded(
        pictures::drawn(203, 117, [](int x, int y) { return pictures::Colour{x, 2 * y, 200 - x}; }),
        20);
    const auto decoded = decodeImage(encoded(picture, 80));
    ASSERT_TRUE(decoded) << decoded.error().message;
    ASSERT_EQ(pictures::sizeOf(*decoded), std::pair(203, 117));
    for (int y = 5; y < 117; y += 10) {
        for (int x = 5; x < 203; x += 10) {
            const auto expected = pictures::colourAt(picture, x, y);
            const auto seen = pictures::colourAt(*decoded, x, y);
            EXPECT_NEAR(seen.red, expected.red, 8);
            EXPECT_NEAR(seen.green, expected.green, 8);
            EXPECT_NEAR(seen.blue, expected.blue, 8);
        }
    }
}

TEST(JpegWriter, AnEmptyPictureHasNoFile) { EXPECT_FALSE(encodeJpeg(Pixels{}, 80)); }

}  // namespace
}  // namespace tandrel
