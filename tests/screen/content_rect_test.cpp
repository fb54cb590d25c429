#include "screen/content_rect.h"

#include <cmath>

#include <fmt/format.h>
#include <gtest/gtest.h>

#include "image/pictures.h"

namespace tandrel {
namespace {

using pictures::onBlack;

std::string text(const ContentRect& found) {
    const PixelRect& at = found.rect;
    return fmt::format("{} {} {},{} {}x{}", found.method, found.orientation, at.x, at.y, at.width,
                       at.height);
}

ContentRect detect(const PixelBuffer& picture, std::optional<double> hint = {},
                   std::optional<std::string_view> prefer = {}) {
    return withPixels(picture,
                      [&](const Pixels& pixels) { return detectContent(pixels, hint, prefer); });
}

// A window with a grey title bar of `bar` rows.
PixelBuffer belowBar(int width, int height, int bar, const PixelRect& rect) {
    const PixelBuffer below = onBlack(width, height, rect);
    return pictures::drawn(width, height, [&](int x, int y) {
        return y < bar ? pictures::Colour{70, 70, 72} : pictures::colourAt(below, x, y);
    });
}

TEST(DetectContent, FindsThePhonesScreen) {
    const PixelBuffer blank = onBlack(700, 1000, {});
    const PixelBuffer spot = onBlack(1000, 1000, {490, 490, 20, 20});
    const PixelBuffer twoEdges = pictures::drawn(900, 700, [](int x, int) {
        return x < 20 || x >= 880 ? pictures::kWhite : pictures::kBlack;
    });
    const struct {
        PixelBuffer picture;
        std::string content;
        std::optional<double> hint = {};
        std::optional<std::string_view> prefer = {};
    } rows[] = {
        {onBlack(800, 1400, {90, 40, 603, 1311}), "edges portrait 90,40 603x1311"},
        {onBlack(1500, 800, {100, 50, 1311, 603}), "edges landscape 100,50 1311x603"},
        {onBlack(750, 1334, {0, 0, 750, 1334}), "edges portrait 0,0 750x1334"},
        {belowBar(603, 1341, 28, {0, 30, 603, 1311}), "edges portrait 0,30 603x1311"},
        // A shape within the tolerance, the smallest box, one column less, and a hinted shape.
        {onBlack(800, 1400, {90, 40, 603, 1325}), "edges portrait 90,40 603x1325"},
        {onBlack(100, 200, {20, 30, 60, 130}), "edges portrait 20,30 60x130"},
        {onBlack(100, 200, {20, 30, 59, 128}), "fit portrait 4,0 92x200"},
        {onBlack(500, 700, {50, 50, 400, 600}), "edges portrait 50,50 400x600", 2.0 / 3},

        // 1206/2622 of 1000 rows is 460 columns, 1179/2556 is 461: the first shape is taken.
        {onBlack(700, 1000, {150, 900, 400, 80}), "fit portrait 120,0 460x1000"},
        {onBlack(700, 1000, {20, 400, 660, 200}), "fit landscape 0,339 700x322"},
        {belowBar(700, 1050, 50, {300, 900, 100, 80}), "fit portrait 120,50 460x1000"},
        // Where both orientations hold the spot: the tighter, the preferred, the first.
        {onBlack(1000, 700, {490, 340, 20, 20}), "fit portrait 339,0 322x700"},
        {spot, "fit portrait 270,0 460x1000"},
        {spot, "fit landscape 0,269 1000x461", {}, "landscape"},
        {spot, "fit portrait 250,0 500x1000", 0.5},  // a hint is the only shape that is fitted

        {blank, "blank portrait 120,0 460x1000"},
        {blank, "blank landscape 0,339 700x322", {}, "landscape"},
        {blank, "blank portrait 120,0 460x1000", {}, "sideways"},
        {blank, "blank portrait 100,0 500x1000", 0.5},

        {pictures::plain(700, 700, pictures::kWhite), "bbox portrait 0,0 700x700"},
        {twoEdges, "bbox landscape 0,0 900x700"},
    };
    for (const auto& row : rows)
        EXPECT_EQ(text(detect(row.picture, row.hint, row.prefer)), row.content);
}

TEST(DetectContent, AnyPictureAndHintGivesAResult) {
    const PixelBuffer spot = onBlack(300, 200, {140, 90, 20, 20});
    for (const double hint : {0.0, -1.0, 1e-320, 1e300, HUGE_VAL, std::nan("")}) {
        const PixelRect rect = detect(spot, hint).rect;
        EXPECT_TRUE(std::isfinite(rect.x) && std::isfinite(rect.width)) << hint;
    }
    EXPECT_EQ(detectContent(Pixels{}, {}, {}).method, "blank");
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 500}, {500, 1}}) {
        detect(pictures::plain(width, height, pictures::kWhite));
    }
}

TEST(Fit, CentresTheLargestScreenInTheRectangle) {
    EXPECT_EQ(fit(0.5, false, {10, 20, 300, 400}), (PixelRect{60, 20, 200, 400}));
    EXPECT_EQ(fit(0.5, true, {10, 20, 300, 400}), (PixelRect{10, 145, 300, 150}));
    EXPECT_EQ(fit(0.5, false, {0, 0, 100, 400}), (PixelRect{0, 100, 100, 200}));
    // Halves round away from zero: x is 100.5, the width 0.5 * 99 = 49.5.
    EXPECT_EQ(fit(0.5, false, {0, 0, 250.5, 99}), (PixelRect{101, 0, 50, 99}));
}

TEST(ContentRect, AsJsonCutsToIntegers) {
    EXPECT_EQ(dumpJson(ContentRect{{1.9, 2.1, 30.5, 40}, "portrait", "fit"}.json()),
              R"({"h":40,"method":"fit","orientation":"portrait","w":30,"x":1,"y":2})");
}

}  // namespace
}  // namespace tandrel
