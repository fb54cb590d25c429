#include "base/frame_pool.h"

#include <algorithm>
#include <vector>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

constexpr std::size_t kSize = 4000;

std::shared_ptr<std::uint8_t> filled(FramePool& pool, std::uint8_t value,
                                     std::size_t size = kSize) {
    auto memory = pool.take(size);
    std::fill_n(memory.get(), size, value);
    return memory;
}

bool isAll(const std::shared_ptr<std::uint8_t>& memory, std::uint8_t value,
           std::size_t size = kSize) {
    return std::all_of(memory.get(), memory.get() + size,
                       [value](std::uint8_t byte) { return byte == value; });
}

TEST(FramePool, WhatIsHeldStaysAsItIs) {
    FramePool pool;
    std::vector<std::shared_ptr<std::uint8_t>> held;
    for (std::uint8_t value = 0; value < 3 * FramePool::kMostKept; ++value) {
        held.push_back(filled(pool, value));
    }
    for (std::uint8_t value = 0; value < held.size(); ++value) {
        EXPECT_TRUE(isAll(held[value], value)) << int{value};
    }
}

TEST(FramePool, MemoryComesBackWithItsLastHolder) {
    FramePool pool;
    auto first = filled(pool, 1);
    const std::uint8_t* memory = first.get();
    auto second = first;
    first.reset();
    EXPECT_NE(filled(pool, 2).get(), memory) << "someone still looks at it";
    second.reset();
    EXPECT_EQ(filled(pool, 3).get(), memory);
}

TEST(FramePool, AnotherSizeGetsMemoryOfItsOwn) {
    FramePool pool;
    filled(pool, 1);
    const auto larger = filled(pool, 2, 100 * kSize);
    EXPECT_TRUE(isAll(larger, 2, 100 * kSize));
    filled(pool, 3);
    EXPECT_TRUE(isAll(filled(pool, 4, kSize / 2), 4, kSize / 2));
}

TEST(FramePool, WhatIsLentOutlivesIt) {
    std::shared_ptr<std::uint8_t> memory;
    {
        FramePool pool;
        memory = filled(pool, 7);
    }
    EXPECT_TRUE(isAll(memory, 7));
}

}  // namespace
}  // namespace tandrel
