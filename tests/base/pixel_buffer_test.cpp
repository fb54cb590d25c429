#include "base/pixel_buffer.h"

#include <vector>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

TEST(PixelBuffer, HandingOnSharesAndCopyingIsCounted) {
    const auto original = PixelBuffer::make(2, 3, [](std::uint8_t* pixels, int rowBytes) {
        pixels[2 * rowBytes + 4] = 7;  // blue of (1, 2)
    });
    const std::uint64_t before = PixelBuffer::copiesMade();
    const PixelBuffer handedOn = original;
    EXPECT_TRUE(handedOn.sharesPixelsWith(original));
    EXPECT_EQ(PixelBuffer::copiesMade(), before);
    const PixelBuffer copy = original.copy();
    EXPECT_FALSE(copy.sharesPixelsWith(original));
    EXPECT_EQ(PixelBuffer::copiesMade(), before + 1);
    EXPECT_EQ(copy.row(2)[4], 7);
    EXPECT_EQ(copy.row(1)[4], 0);
}

TEST(PixelBuffer, ForeignRowsMayBeLongerAndLiveAsLongAsTheBuffer) {
    auto pixels = std::make_shared<std::vector<std::uint8_t>>(2 * 12);
    (*pixels)[12] = 9;  // blue of (0, 1) in rows of 12 bytes
    const std::weak_ptr<const void> alive = pixels;
    auto buffer = PixelBuffer::adopt(2, 2, 12, pixels->data(), pixels);
    pixels.reset();
    EXPECT_EQ(buffer.row(1)[0], 9);
    const PixelBuffer copy = buffer.copy();
    EXPECT_EQ(copy.rowBytes(), 8);
    EXPECT_EQ(copy.row(1)[0], 9);
    EXPECT_FALSE(alive.expired());
    buffer = {};
    EXPECT_TRUE(alive.expired());
}

}  // namespace
}  // namespace tandrel
