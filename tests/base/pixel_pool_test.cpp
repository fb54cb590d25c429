#include "base/pixel_pool.h"

#include <algorithm>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

PixelBuffer filled(PixelPool& pool, std::uint8_t value, int height = 20) {
    return pool.make(30, height, [&](std::uint8_t* pixels, int rowBytes) {
        std::fill_n(pixels, static_cast<std::ptrdiff_t>(rowBytes) * height, value);
    });
}

bool isAll(const PixelBuffer& picture, std::uint8_t value) {
    return std::all_of(picture.pixels(), picture.row(picture.height()),
                       [value](std::uint8_t byte) { return byte == value; });
}

TEST(PixelPool, AHeldPictureKeepsItsPixels) {
    PixelPool pool;
    std::vector<PixelBuffer> held;
    for (std::uint8_t value = 0; value < 3 * PixelPool::kMostKept; ++value) {
        held.push_back(filled(pool, value));
    }
    for (std::uint8_t value = 0; value < held.size(); ++value) {
        EXPECT_TRUE(isAll(held[value], value)) << int{value};
    }
}

TEST(PixelPool, MemoryComesBackWithItsLastHolder) {
    PixelPool pool;
    PixelBuffer first = filled(pool, 1);
    const std::uint8_t* memory = first.pixels();
    PixelBuffer second = first;
    first = {};
    EXPECT_NE(filled(pool, 2).pixels(), memory) << "someone still looks at it";
    second = {};
    const PixelBuffer third = filled(pool, 3);
    const PixelBuffer fourth = filled(pool, 4);
    EXPECT_TRUE(third.pixels() == memory || fourth.pixels() == memory);
}

TEST(PixelPool, AnotherSizeGetsMemoryOfItsOwn) {
    PixelPool pool;
    filled(pool, 1, 20);
    const PixelBuffer larger = filled(pool, 2, 2000);
    EXPECT_TRUE(isAll(larger, 2));
    EXPECT_EQ(larger.height(), 2000);
}

TEST(PixelPool, PicturesOutliveIt) {
    PixelBuffer picture;
    {
        PixelPool pool;
        picture = filled(pool, 7);
    }
    EXPECT_TRUE(isAll(picture, 7));
}

}  // namespace
}  // namespace tandrel
