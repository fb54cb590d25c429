#include "reading/line_finder.h"

#include <functional>
#include <random>

#include <gtest/gtest.h>

#include "reading/drawn_frame.h"

namespace tandrel {
namespace {

constexpr int kDensity = 3;
constexpr Colour kGrey{0.6, 0.6, 0.62};

// Left and right of each line in points, top down.
using Spans = std::vector<std::pair<int, int>>;

const std::tuple<const char*, std::function<void(DrawnFrame&)>, Spans> kCases[] = {
    {"a name and its value at the right",
     [](DrawnFrame& frame) {
         frame.text(20, 50, "Language");
         frame.text(300, 50, "English");
     },
     {{300, 356}, {20, 99}}},
    {"an icon taller than the text beside it",
     [](DrawnFrame& frame) {
         frame.disc(33, 45, 13, kGrey);
         frame.text(54, 51, "Security");
     },
     {{54, 122}}},
    {"a separator below the text",
     [](DrawnFrame& frame) {
         frame.text(20, 50, "Language");
         frame.rectangle(20, 62, 350, 0.6, 0, kGrey);
     },
     {{20, 99}}},
    {"a field's outline around the text",
     [](DrawnFrame& frame) {
         frame.outline(20, 25, 350, 40, 8, kGrey);
         frame.text(40, 51, "Password");
     },
     {{40, 119}}},
    {"the bars of a phone's signal, and a battery with its figure",
     [](DrawnFrame& frame) {
         for (int bar = 0; bar < 4; ++bar) {
             frame.rectangle(20 + bar * 5, 50 - bar * 3, 3, 4 + bar * 3, 1, kBlack);
         }
         frame.text(52, 54, "5G");
         frame.rectangle(84, 41, 26, 14, 4, kBlack);
         frame.text(90, 53, "90", {"Inter", 11, kWhite});
     },
     {{52, 76}, {90, 104}}},
    {"a solid disc, and one with a figure",
     [](DrawnFrame& frame) {
         frame.disc(40, 45, 10, kBlack);
         frame.disc(100, 45, 10, kBlack);
         frame.text(96, 50, "3", {"Inter", 13, kWhite});
     },
     {{96, 104}}},
    {"a large figure with its comma and sign",
     [](DrawnFrame& frame) { frame.text(20, 70, "345,27 €", {"Inter Light", 52, kBlack}); },
     {{20, 234}}},
    {"a thin minus before a large figure, and a sum of three characters",
     [](DrawnFrame& frame) {
         frame.text(20, 40, "-$73,752.50", {"Inter Light", 31, kBlack});
         frame.text(20, 80, "$13", {"Noto Sans", 18, kBlack});
     },
     {{20, 190}, {20, 51}}},
    {"a plus sign before the figure, the arrow of a place behind the time",
     [](DrawnFrame& frame) {
         frame.text(20, 50, "+ 69.98");
         frame.text(200, 50, "1:49");
         frame.line(237, 44, 247, 39, 1.5, kBlack);
         frame.line(247, 39, 242, 48, 1.5, kBlack);
         frame.line(242, 48, 241, 44, 1.5, kBlack);
         frame.line(241, 44, 237, 44, 1.5, kBlack);
     },
     {{20, 81}, {200, 232}}},
};

TEST(LineFinder, findsLinesWhereTheInkIs) {
    for (const auto& [name, draw, spans] : kCases) {
        SCOPED_TRACE(name);
        DrawnFrame drawn(390 * kDensity, 90 * kDensity, kDensity, kWhite);
        draw(drawn);
        Spans found;
        for (const TextLine& line : findLines(GrayFrame::from(drawn.frame()))) {
            if (line.ink.box.height() > 60 * kDensity) continue;
            found.emplace_back(line.ink.box.left / kDensity, line.ink.box.right / kDensity);
        }
        ASSERT_EQ(found.size(), spans.size());
        for (std::size_t i = 0; i < spans.size(); ++i) {
            EXPECT_NEAR(found[i].first, spans[i].first, 4);
            EXPECT_NEAR(found[i].second, spans[i].second, 6);
        }
    }
}

// Dark grey with a rim as on maps, across roads and the line of a coast.
TEST(LineFinder, findsLabelsOnAMap) {
    DrawnFrame drawn(390 * kDensity, 300 * kDensity, kDensity, {0.95, 0.93, 0.9});
    for (int i = 0; i < 9; ++i) {
        drawn.line(0, 20 + 33 * i, 390, 290 - 31 * i, 2 + i % 3, kWhite);
        drawn.line(40 * i, 0, 390 - 35 * i, 300, 1.5, {0.8, 0.75, 0.7});
    }
    drawn.disc(300, 200, 60, {0.67, 0.83, 0.95});
    for (const double by : {-1.0, 1.0}) {
        drawn.text(120 + by, 150, "Old Harbour", {"Inter", 14, kWhite});
        drawn.text(120, 150 + by, "Old Harbour", {"Inter", 14, kWhite});
    }
    const double width = drawn.text(120, 150, "Old Harbour", {"Inter", 14, {0.3, 0.3, 0.33}});
    const auto lines = findLines(GrayFrame::from(drawn.frame()));
    const auto found = std::ranges::count_if(lines, [&](const TextLine& line) {
        return std::abs(line.ink.box.left - 120 * kDensity) < 9 &&
               std::abs(line.ink.box.right - (120 + width) * kDensity) < 50;
    });
    EXPECT_EQ(found, 1);
}

// A stroke of a picture stands beside letters of both rows, and so joins them into one line.
TEST(LineFinder, keepsRowsApartThatAPictureJoins) {
    DrawnFrame drawn(390 * kDensity, 90 * kDensity, kDensity, kWhite);
    const double upper = drawn.text(20, 40, "Delivery tomorrow", {"Inter", 24, kBlack});
    const double lower = drawn.text(20, 66, "Two of three are left", {"Inter", 15, kBlack});
    drawn.line(8, 33, 14, 58, 2, kBlack);
    const auto lines = findLines(GrayFrame::from(drawn.frame()));
    for (const double width : {upper, lower}) {
        const auto found = std::ranges::count_if(lines, [&](const TextLine& line) {
            const PixelBox& box = line.ink.box;
            return box.left <= 22 * kDensity &&
                   std::abs(box.right - (20 + width) * kDensity) < 12 &&
                   box.height() < 38 * kDensity;
        });
        EXPECT_EQ(found, 1) << width;
    }
}

TEST(LineFinder, findsWhiteLettersOnAPhoto) {
    DrawnFrame drawn(390 * kDensity, 200 * kDensity, kDensity, kBlack);
    GrayFrame frame = GrayFrame::from(drawn.frame());
    std::mt19937 random(11);
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x) {
            frame.row(y)[x] = static_cast<std::uint8_t>(60 + random() % 90);
        }
    }
    DrawnFrame letters(390 * kDensity, 200 * kDensity, kDensity, kBlack);
    letters.text(100, 100, "Wallpaper", {"Inter Semi-Bold", 20, kWhite});
    const GrayFrame white = GrayFrame::from(letters.frame());
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x) {
            frame.row(y)[x] = std::max(frame.row(y)[x], white.row(y)[x]);
        }
    }
    const auto lines = findLines(frame);
    const auto found = std::ranges::count_if(lines, [](const TextLine& line) {
        return line.onPicture && std::abs(line.ink.box.left - 301) < 12 &&
               std::abs(line.ink.box.right - 597) < 24;
    });
    EXPECT_EQ(found, 1);
}

}  // namespace
}  // namespace tandrel
