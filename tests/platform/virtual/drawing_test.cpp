#include "platform/virtual/drawing.h"

#include <cstdlib>
#include <cstring>
#include <fstream>

#include <gtest/gtest.h>

#include "platform/virtual/frame_painter.h"
#include "platform/virtual/virtual_support.h"

namespace tandrel {
namespace {

constexpr int kThumbWidth = 90;
constexpr int kThumbHeight = 195;

// A phone's grey screen with its pointer, drawn as small as a thumbnail of it.
PixelBuffer thumbnail(int level, double x, double y) {
    return PixelBuffer::make(kThumbWidth, kThumbHeight, [&](std::uint8_t* pixels, int rowBytes) {
        auto* surface = cairo_image_surface_create_for_data(pixels, CAIRO_FORMAT_RGB24, kThumbWidth,
                                                            kThumbHeight, rowBytes);
        cairo_t* cairo = cairo_create(surface);
        cairo_scale(cairo, kThumbWidth / 402.0, kThumbHeight / 874.0);
        cairo_set_source_rgb(cairo, level / 255.0, level / 255.0, level / 255.0);
        cairo_paint(cairo);
        drawPointer(cairo, {x * 402, y * 874});
        cairo_destroy(cairo);
        cairo_surface_destroy(surface);
    });
}

// Pixels at most 7 from the point that differ by 13 levels or more.
int changedAround(const PixelBuffer& before, const PixelBuffer& after, double x, double y) {
    int changed = 0;
    const int left = static_cast<int>(x * kThumbWidth) - 7;
    const int top = static_cast<int>(y * kThumbHeight) - 7;
    for (int row = top; row <= top + 14; ++row) {
        for (int column = left; column <= left + 14; ++column) {
            const int at = column * PixelBuffer::kBytesPerPixel;
            if (std::abs(before.row(row)[at] - after.row(row)[at]) >= 13) ++changed;
        }
    }
    return changed;
}

TEST(Pointer, JumpShowsInAThumbnailOnEveryGround) {
    for (int level = 0; level <= 255; level += 15) {
        const auto before = thumbnail(level, 0.3, 0.35);
        const auto after = thumbnail(level, 0.7, 0.65);
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
