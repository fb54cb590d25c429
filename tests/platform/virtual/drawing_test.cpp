#include "platform/virtual/drawing.h"

#include <cstdlib>
#include <cstring>
#include <fstream>
#include <vector>

#include <gtest/gtest.h>

#include "platform/virtual/frame_painter.h"
#include "platform/virtual/virtual_support.h"

namespace tandrel {
namespace {

constexpr int kThumbWidth = 90;
constexpr int kThumbHeight = 195;

// The frame as a grey thumbnail, each pixel the mean of what it covers.
std::vector<int> thumbnail(const PixelBuffer& frame) {
    std::vector<double> sums(kThumbWidth * kThumbHeight);
    std::vector<int> counts(sums.size());
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x) {
            const std::uint8_t* pixel = frame.row(y) + 4 * x;
            const auto at = static_cast<std::size_t>(
                y * kThumbHeight / frame.height() * kThumbWidth + x * kThumbWidth / frame.width());
            sums[at] += 0.114 * pixel[0] + 0.587 * pixel[1] + 0.299 * pixel[2];
            ++counts[at];
        }
    }
    std::vector<int> grey;
    for (std::size_t i = 0; i < sums.size(); ++i)
        grey.push_back(static_cast<int>(sums[i] / counts[i]));
    return grey;
}

// Pixels of the thumbnail, at most 7 from the point, that differ by 13 levels or more.
int changedAround(const std::vector<int>& before, const std::vector<int>& after, double x,
                  double y) {
    int changed = 0;
    const int cx = static_cast<int>(x * kThumbWidth);
    const int cy = static_cast<int>(y * kThumbHeight);
    for (int row = cy - 7; row <= cy + 7; ++row) {
        for (int column = cx - 7; column <= cx + 7; ++column) {
            const auto at = static_cast<std::size_t>(row * kThumbWidth + column);
            if (std::abs(before[at] - after[at]) >= 13) ++changed;
        }
    }
    return changed;
}

PixelBuffer ground(int level, Point pointer) {
    constexpr int kWidth = 1206;
    constexpr int kHeight = 2622;
    return PixelBuffer::make(kWidth, kHeight, [&](std::uint8_t* pixels, int rowBytes) {
        auto* surface = cairo_image_surface_create_for_data(pixels, CAIRO_FORMAT_RGB24, kWidth,
                                                            kHeight, rowBytes);
        cairo_t* cairo = cairo_create(surface);
        cairo_scale(cairo, 3, 3);
        const double grey = level / 255.0;
        cairo_set_source_rgb(cairo, grey, grey, grey);
        cairo_paint(cairo);
        drawPointer(cairo, pointer);
        cairo_destroy(cairo);
        cairo_surface_destroy(surface);
    });
}

TEST(Pointer, JumpShowsInAThumbnailOnEveryGround) {
    for (int level = 0; level <= 255; level += 15) {
        const auto before = thumbnail(ground(level, {0.3 * 402, 0.35 * 874}));
        const auto after = thumbnail(ground(level, {0.7 * 402, 0.65 * 874}));
        EXPECT_GE(changedAround(before, after, 0.3, 0.35), 6) << "ground " << level;
        EXPECT_GE(changedAround(before, after, 0.7, 0.65), 6) << "ground " << level;
        EXPECT_EQ(changedAround(before, after, 0.3, 0.65), 0) << "ground " << level;
    }
}

class PaintedPhone : public testing::Test {
 protected:
    Fonts fonts_;
    Scenario scenario_ = *loadScenario(test::shareFolder() / "scenarios/default.json");
    PhoneModel model_{scenario_, fonts_};
    FramePainter painter_{fonts_, scenario_.phone.scale};
};

TEST_F(PaintedPhone, IsDrawnAnewOnlyWhenSomethingChanged) {
    const auto first = painter_.paint(model_);
    EXPECT_EQ(first.width(), 1206);
    EXPECT_EQ(first.height(), 2622);
    EXPECT_TRUE(painter_.paint(model_).sharesPixelsWith(first));
    model_.receive(PointerTo{{0.5, 0.5}}, {});
    const auto second = painter_.paint(model_);
    EXPECT_FALSE(second.sharesPixelsWith(first));
    model_.receive(PointerTo{{0.5, 0.5}}, {});
    EXPECT_TRUE(painter_.paint(model_).sharesPixelsWith(second));
}

TEST_F(PaintedPhone, FrameThatIsHeldKeepsItsPixels) {
    model_.showPage("settings");
    const auto held = painter_.paint(model_);
    const auto kept = held.copy();
    for (int i = 0; i < 8; ++i) {
        model_.receive(PointerTo{{0.1 * i, 0.1 * i}}, {});
        painter_.paint(model_);
    }
    EXPECT_EQ(std::memcmp(held.pixels(), kept.pixels(), 1206 * 2622 * 4), 0);
}

TEST_F(PaintedPhone, RotatesAndGoesDark) {
    model_.rotate();
    EXPECT_EQ(painter_.paint(model_).width(), 2622);
    model_.sleep();
    const auto dark = painter_.paint(model_);
    for (const double at : {0.01, 0.5, 0.99}) EXPECT_EQ(test::pixelAt(dark, {at, at}).brightest, 0);
}

TEST_F(PaintedPhone, DarkAppearanceIsDark) {
    model_.showPage("display");
    EXPECT_GT(test::pixelAt(painter_.paint(model_), {0.5, 0.9}).darkest, 200);
    const auto place = *model_.find("Dark Mode");
    model_.touch(TouchPhase::down, place, {});
    model_.touch(TouchPhase::up, place, {});
    EXPECT_LT(test::pixelAt(painter_.paint(model_), {0.5, 0.9}).brightest, 40);
}

// In a process of its own, since the font configuration is read once.
TEST(FontsDeathTest, WithoutAnyFontEverythingElseIsDrawn) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    const auto paintWithoutFonts = [] {
        const std::string file = testing::TempDir() + "no-fonts.conf";
        std::ofstream(file) << "<?xml version=\"1.0\"?><!DOCTYPE fontconfig SYSTEM \"fonts.dtd\">"
                               "<fontconfig></fontconfig>";
        setenv("FONTCONFIG_FILE", file.c_str(), 1);
        Fonts fonts;
        const auto scenario = *loadScenario(test::shareFolder() / "scenarios/default.json");
        PhoneModel model(scenario, fonts);
        FramePainter painter(fonts, 1);
        for (const Page& page : scenario.pages) {
            model.showPage(page.name);
            painter.paint(model);
        }
        std::_Exit(painter.paint(model).width() == 402 ? 0 : 1);
    };
    EXPECT_EXIT(paintWithoutFonts(), testing::ExitedWithCode(0), "");
}

}  // namespace
}  // namespace tandrel
