#include "screen/content_box.h"

#include <gtest/gtest.h>

#include "image/pictures.h"

namespace tandrel {
namespace {

using pictures::Colour;
using pictures::onBlack;

std::optional<PixelRect> boxOf(const PixelBuffer& picture, const PixelRect& in) {
    return withPixels(picture, [&](const Pixels& pixels) { return nonBlackBox(pixels, in); });
}

int barOf(const PixelBuffer& picture) { return withPixels(picture, chromeTop); }

TEST(NonBlackBox, IsExactWhateverTheSampling) {
    constexpr PixelRect kWhole{0, 0, 1600, 2800};  // every fourth pixel is sampled
    for (const PixelRect& rect : {PixelRect{0, 0, 1600, 2800},
                                  {1, 2, 1597, 2795},
                                  {4, 8, 4, 4},
                                  {123, 457, 701, 1303},
                                  {1593, 2793, 7, 7}}) {
        const PixelBuffer picture = onBlack(1600, 2800, rect, {29, 0, 0});
        EXPECT_EQ(boxOf(picture, kWhole), rect) << rect.x << "," << rect.y;
    }
}

TEST(NonBlackBox, ContentBeginsAboveBlack) {
    constexpr PixelRect kWhole{0, 0, 20, 20};
    constexpr PixelRect kSpot{5, 6, 3, 2};
    EXPECT_EQ(boxOf(onBlack(20, 20, kSpot, {28, 28, 28}), kWhole), std::nullopt);
    for (const Colour colour : {Colour{29, 0, 0}, {0, 29, 0}, {0, 0, 29}}) {
        EXPECT_EQ(boxOf(onBlack(20, 20, kSpot, colour), kWhole), kSpot);
    }
}

TEST(NonBlackBox, StaysWithinTheRectangle) {
    const PixelBuffer white = pictures::plain(40, 30, pictures::kWhite);
    EXPECT_EQ(boxOf(white, {5, 6, 10, 12}), (PixelRect{5, 6, 10, 12}));
    EXPECT_EQ(boxOf(white, {5, 6, 10, 0}), std::nullopt);
    EXPECT_EQ(boxOf(white, {-10, -10, 1000, 1000}), (PixelRect{0, 0, 40, 30}));
    EXPECT_EQ(boxOf(white, {50, 50, 10, 10}), std::nullopt);
}

TEST(NonBlackBox, AnEdgeMovesToTheFirstBlackLine) {
    // Sampled every second pixel: a lone dot two columns beyond the screen is not part of it.
    const PixelBuffer picture = pictures::drawn(800, 900, [](int x, int y) {
        const bool screen = x >= 101 && x < 700 && y >= 100 && y < 800;
        return screen || (x == 99 && y == 301) ? pictures::kWhite : pictures::kBlack;
    });
    EXPECT_EQ(boxOf(picture, {0, 0, 800, 900}), (PixelRect{101, 100, 599, 700}));
}

// A window of 200 x 500 whose first `bar` rows are a title bar of `colour`.
PixelBuffer withBar(int bar, Colour colour) {
    return pictures::drawn(200, 500,
                           [=](int, int y) { return y < bar ? colour : pictures::kBlack; });
}

TEST(ChromeTop, FindsAUniformBrightBar) {
    constexpr Colour kGrey{60, 60, 62};
    EXPECT_EQ(barOf(withBar(28, kGrey)), 28);
    EXPECT_EQ(barOf(withBar(0, kGrey)), 0);
    EXPECT_EQ(barOf(withBar(39, kGrey)), 39);
    EXPECT_EQ(barOf(withBar(40, kGrey)), 0) << "uniform over all 8 per cent is content";
    EXPECT_EQ(barOf(withBar(28, {28, 28, 28})), 0) << "black is no bar";
    EXPECT_EQ(barOf(withBar(28, {29, 29, 29})), 28);
}

TEST(ChromeTop, ARowIsUniformWithinItsLimits) {
    // The last `dark` of 100 samples a row are black, the bar else just above black.
    const auto darkShare = [](int dark) {
        return pictures::drawn(100, 500, [=](int x, int y) {
            return y >= 20 || x >= 100 - dark ? pictures::kBlack : Colour{30, 30, 30};
        });
    };
    EXPECT_EQ(barOf(darkShare(2)), 20);
    EXPECT_EQ(barOf(darkShare(3)), 0);
    // Half the columns brighter by `step`: the variance is (step / 2) squared.
    const auto twoTone = [](int step) {
        return pictures::drawn(100, 500, [=](int x, int y) {
            const int level = 100 + x % 2 * step;
            return y >= 20 ? pictures::kBlack : Colour{level, level, level};
        });
    };
    EXPECT_EQ(barOf(twoTone(12)), 20);
    EXPECT_EQ(barOf(twoTone(13)), 0);
}

TEST(ChromeTop, ALowPictureHasNoBar) {
    const auto barOfOneRow = [](int height) {
        return barOf(pictures::drawn(
            50, height, [](int, int y) { return y == 0 ? pictures::kWhite : pictures::kBlack; }));
    };
    EXPECT_EQ(barOfOneRow(12), 0);
    EXPECT_EQ(barOfOneRow(25), 1);
    EXPECT_EQ(chromeTop(Pixels{}), 0);
}

}  // namespace
}  // namespace tandrel
