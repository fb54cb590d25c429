#include "image/window_thumbnail.h"

#include <gtest/gtest.h>

#include "image/pictures.h"

namespace tandrel {
namespace {

using pictures::Colour;

constexpr std::size_t at(int row, int column) { return std::size_t(row * 96 + column); }

TEST(WindowThumbnail, SamplesTheCentreOfEachCell) {
    // Each pixel tells its own place: low digits of x in blue and red alike, of y in green.
    const PixelBuffer byColumn =
        pictures::drawn(1206, 2622, [](int x, int) { return Colour{x % 256, x % 256, x % 256}; });
    const WindowThumbnail columns = withPixels(byColumn, windowThumbnail);
    EXPECT_EQ(columns[at(0, 0)], 6);            // 1206 / 192
    EXPECT_EQ(columns[at(191, 1)], 12 + 6);     // 1206 / 96
    EXPECT_EQ(columns[at(7, 95)], 1199 % 256);  // 95 * 1206 / 96 = 1193

    const PixelBuffer byRow =
        pictures::drawn(100, 2622, [](int, int y) { return Colour{y % 256, y % 256, y % 256}; });
    const WindowThumbnail rows = withPixels(byRow, windowThumbnail);
    EXPECT_EQ(rows[at(0, 5)], 6);             // 2622 / 384
    EXPECT_EQ(rows[at(1, 5)], 13 + 6);        // 2622 / 192
    EXPECT_EQ(rows[at(191, 5)], 2614 % 256);  // 191 * 2622 / 192 = 2608
}

TEST(WindowThumbnail, APictureSmallerThanItRepeatsPixels) {
    const PixelBuffer picture =
        pictures::drawn(2, 3, [](int x, int y) { return Colour{0, 100 * x + 50 * y, 0}; });
    const WindowThumbnail thumbnail = withPixels(picture, windowThumbnail);
    EXPECT_EQ(thumbnail[at(0, 0)], 0);
    EXPECT_EQ(thumbnail[at(0, 47)], 0);
    EXPECT_EQ(thumbnail[at(0, 48)], 50);
    EXPECT_EQ(thumbnail[at(191, 95)], 100);
}

TEST(WindowThumbnail, ValueIsLuma) {
    const PixelBuffer picture = pictures::plain(96, 192, {10, 101, 201});
    EXPECT_EQ(withPixels(picture, windowThumbnail)[0], (201 + 2 * 101 + 10) / 4);
}

TEST(WindowThumbnail, TwoCellsMakeAChange) {
    const std::tuple<const char*, int, int, bool> rows[] = {
        {"same", 0, 0, false},
        {"one cell, much", 1, 40, false},
        {"two cells, much", 2, 40, true},
        {"two cells, just enough", 2, 19, true},
        {"two cells, not enough", 2, 18, false},
        {"all cells, not enough", 18432, 18, false},
        {"two cells, darker", 2, -40, true},
    };
    for (const auto& [name, cells, levels, differs] : rows) {
        WindowThumbnail before;
        before.fill(100);
        WindowThumbnail after = before;
        for (int i = 0; i < cells; ++i) {
            auto& cell = after[after.size() - 1 - std::size_t(i)];
            cell = static_cast<std::uint8_t>(cell + levels);
        }
        EXPECT_EQ(differ(before, after), differs) << name;
    }
}

}  // namespace
}  // namespace tandrel
