#include "screen/content_rect.h"

#include <cmath>

#include <gtest/gtest.h>

#include "image/pictures.h"

namespace tandrel {

void PrintTo(const ContentRect& content, std::ostream* out) { *out << dumpJson(content.json()); }

namespace {

using pictures::Colour;

struct Patch {
    PixelRect rect;
    Colour colour = pictures::kWhite;
};

// A black window with patches drawn on it, later ones on top.
PixelBuffer window(int width, int height, const std::vector<Patch>& patches) {
    return pictures::drawn(width, height, [&](int x, int y) {
        Colour colour = pictures::kBlack;
        for (const Patch& patch : patches) {
            const PixelRect& r = patch.rect;
            if (x >= r.x && x < r.x + r.width && y >= r.y && y < r.y + r.height) {
                colour = patch.colour;
            }
        }
        return colour;
    });
}

constexpr Colour kBarGrey{70, 70, 72};

struct ContentCase {
    const char* name;
    PixelBuffer picture;
    std::optional<double> hint;
    std::optional<std::string_view> prefer;
    ContentRect content;
};

const ContentCase kContentCases[] = {
    {"margins around a portrait screen",
     window(800, 1400, {{{90, 40, 603, 1311}}}),
     {},
     {},
     {{90, 40, 603, 1311}, "portrait", "edges"}},
    {"a landscape screen",
     window(1500, 800, {{{100, 50, 1311, 603}}}),
     {},
     {},
     {{100, 50, 1311, 603}, "landscape", "edges"}},
    {"the screen fills the picture",
     window(750, 1334, {{{0, 0, 750, 1334}}}),
     {},
     {},
     {{0, 0, 750, 1334}, "portrait", "edges"}},
    {"below a title bar",
     window(603, 1341, {{{0, 0, 603, 28}, kBarGrey}, {{0, 30, 603, 1311}}}),
     {},
     {},
     {{0, 30, 603, 1311}, "portrait", "edges"}},
    {"shape within the tolerance",
     window(800, 1400, {{{90, 40, 603, 1325}}}),
     {},
     {},
     {{90, 40, 603, 1325}, "portrait", "edges"}},
    {"60 pixels wide is enough",
     window(100, 200, {{{20, 30, 60, 130}}}),
     {},
     {},
     {{20, 30, 60, 130}, "portrait", "edges"}},
    {"a hint makes its shape known",
     window(500, 700, {{{50, 50, 400, 600}}}),
     2.0 / 3,
     {},
     {{50, 50, 400, 600}, "portrait", "edges"}},

    // 1206/2622 of 1000 rows is 460 columns, 1179/2556 is 461: the first shape is taken.
    {"bright dock on a dark screen",
     window(700, 1000, {{{150, 900, 400, 80}}}),
     {},
     {},
     {{120, 0, 460, 1000}, "portrait", "fit"}},
    {"content too wide for portrait",
     window(700, 1000, {{{20, 400, 660, 200}}}),
     {},
     {},
     {{0, 339, 700, 322}, "landscape", "fit"}},
    {"both orientations hold a spot: the tighter",
     window(1000, 700, {{{490, 340, 20, 20}}}),
     {},
     {},
     {{339, 0, 322, 700}, "portrait", "fit"}},
    {"orientations of one area: the first",
     window(1000, 1000, {{{490, 490, 20, 20}}}),
     {},
     {},
     {{270, 0, 460, 1000}, "portrait", "fit"}},
    {"orientations of one area: the last preferred",
     window(1000, 1000, {{{490, 490, 20, 20}}}),
     {},
     "landscape",
     {{0, 269, 1000, 461}, "landscape", "fit"}},
    {"a hint is the only shape that is fitted",
     window(1000, 1000, {{{490, 490, 20, 20}}}),
     0.5,
     {},
     {{250, 0, 500, 1000}, "portrait", "fit"}},
    {"fitted below the title bar",
     window(700, 1050, {{{0, 0, 700, 50}, kBarGrey}, {{300, 900, 100, 80}}}),
     {},
     {},
     {{120, 50, 460, 1000}, "portrait", "fit"}},

    {"blank", window(700, 1000, {}), {}, {}, {{120, 0, 460, 1000}, "portrait", "blank"}},
    {"blank, landscape preferred",
     window(700, 1000, {}),
     {},
     "landscape",
     {{0, 339, 700, 322}, "landscape", "blank"}},
    {"blank, other words prefer nothing",
     window(700, 1000, {}),
     {},
     "sideways",
     {{120, 0, 460, 1000}, "portrait", "blank"}},
    {"blank with a hint",
     window(700, 1000, {}),
     0.5,
     {},
     {{100, 0, 500, 1000}, "portrait", "blank"}},

    {"content in every corner",
     window(700, 700, {{{0, 0, 700, 700}}}),
     {},
     {},
     {{0, 0, 700, 700}, "portrait", "bbox"}},
    {"wide content, no phone's shape",
     window(900, 700, {{{0, 0, 20, 700}}, {{880, 0, 20, 700}}}),
     {},
     {},
     {{0, 0, 900, 700}, "landscape", "bbox"}},
};

TEST(DetectContent, FindsThePhonesScreen) {
    for (const auto& row : kContentCases) {
        const ContentRect seen = withPixels(row.picture, [&](const Pixels& pixels) {
            return detectContent(pixels, row.hint, row.prefer);
        });
        EXPECT_EQ(seen, row.content) << row.name;
    }
}

TEST(DetectContent, A59PixelBoxIsNoScreen) {
    const PixelBuffer picture = window(100, 200, {{{20, 30, 59, 128}}});
    const auto content =
        withPixels(picture, [](const Pixels& pixels) { return detectContent(pixels, {}, {}); });
    EXPECT_EQ(content.method, "fit");
}

TEST(DetectContent, AnyPictureAndHintGivesAResult) {
    const PixelBuffer spot = window(300, 200, {{{140, 90, 20, 20}}});
    for (const double hint : {0.0, -1.0, 1e-320, 1e300, HUGE_VAL, std::nan("")}) {
        const auto content =
            withPixels(spot, [&](const Pixels& pixels) { return detectContent(pixels, hint, {}); });
        EXPECT_TRUE(std::isfinite(content.rect.x) && std::isfinite(content.rect.width)) << hint;
    }
    EXPECT_EQ(detectContent(Pixels{}, {}, {}).method, "blank");
    for (const auto& [width, height] : {std::pair{1, 1}, {1, 500}, {500, 1}}) {
        const PixelBuffer picture = pictures::plain(width, height, pictures::kWhite);
        withPixels(picture, [](const Pixels& pixels) { return detectContent(pixels, {}, {}); });
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
