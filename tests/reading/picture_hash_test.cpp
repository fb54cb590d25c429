#include "reading/picture_hash.h"

#include <cstring>
#include <set>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

using Sums = std::set<std::pair<std::uint64_t, std::uint64_t>>;

PixelBuffer rowOf(const std::vector<std::uint8_t>& bytes) {
    const auto pixels = static_cast<int>(bytes.size() / PixelBuffer::kBytesPerPixel);
    return PixelBuffer::make(
        pixels, 1, [&](std::uint8_t* row, int) { std::memcpy(row, bytes.data(), bytes.size()); });
}

std::pair<std::uint64_t, std::uint64_t> sumOf(const std::vector<std::uint8_t>& bytes) {
    const RowSum sum = rowSumsOf(rowOf(bytes)).at(0);
    return {sum.first, sum.second};
}

// Rows shorter than a block of the sum, of whole blocks and with a rest.
TEST(PictureHash, aRowsSumTellsEveryByte) {
    for (const std::size_t pixels : {1, 8, 31, 32, 33, 64, 301}) {
        std::vector<std::uint8_t> row(pixels * PixelBuffer::kBytesPerPixel, 200);
        Sums sums = {sumOf(row)};
        EXPECT_EQ(sumOf(row), *sums.begin()) << "the same twice";
        for (auto& byte : row) {
            for (const int change : {1, 128}) {
                byte = static_cast<std::uint8_t>(byte ^ change);
                EXPECT_TRUE(sums.insert(sumOf(row)).second) << pixels << " pixels";
                byte = static_cast<std::uint8_t>(byte ^ change);
            }
        }
    }
}

TEST(PictureHash, aRowsSumTellsWhereAndHowMuch) {
    Sums sums;
    std::size_t rows = 0;
    // Nothing but zeros, of every length; then the same pixels in other places.
    for (std::size_t pixels = 1; pixels < 100; ++pixels, ++rows)
        sums.insert(sumOf(std::vector<std::uint8_t>(pixels * PixelBuffer::kBytesPerPixel, 0)));
    for (std::size_t at = 0; at < 380; ++at, ++rows) {
        std::vector<std::uint8_t> row(400, 9);
        std::fill_n(row.begin() + static_cast<std::ptrdiff_t>(at), 16, std::uint8_t{77});
        sums.insert(sumOf(row));
    }
    EXPECT_EQ(sums.size(), rows);
}

}  // namespace
}  // namespace tandrel
