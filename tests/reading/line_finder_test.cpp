#include "reading/line_finder.h"

#include <functional>
#include <ostream>
#include <random>

#include <gtest/gtest.h>

#include "reading/drawn_frame.h"

namespace tandrel {
namespace {

constexpr int kDensity = 3;
constexpr Colour kGrey{0.6, 0.6, 0.62};

struct Case {
    const char* name;
    std::function<void(DrawnFrame&)> draw;
    std::vector<std::pair<int, int>> spans;  // left and right of each line in points, top down
};
void PrintTo(const Case& row, std::ostream* out) { *out << row.name; }

void circleIcon(DrawnFrame& frame, double x, double y, double size) {
    frame.rectangle(x, y, size, size, size / 2, kGrey);
}

const Case kCases[] = {
    {"a name and its value at the right",
     [](DrawnFrame& frame) {
         frame.text(20, 50, "Language");
         frame.text(300, 50, "English");
     },
     {{300, 356}, {20, 99}}},
    {"an icon taller than the text beside it",
     [](DrawnFrame& frame) {
         circleIcon(frame, 20, 32, 26);
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
};

class FindsLines : public testing::TestWithParam<Case> {};

TEST_P(FindsLines, whereTheInkIs) {
    DrawnFrame drawn(390 * kDensity, 90 * kDensity, kDensity, kWhite);
    GetParam().draw(drawn);
    const auto lines = findLines(GrayFrame::from(drawn.frame()));
    std::vector<std::pair<int, int>> spans;
    for (const TextLine& line : lines) {
        if (line.ink.box.height() > 20 * kDensity) continue;
        spans.emplace_back(line.ink.box.left / kDensity, line.ink.box.right / kDensity);
    }
    ASSERT_EQ(spans.size(), GetParam().spans.size());
    for (std::size_t i = 0; i < spans.size(); ++i) {
        EXPECT_NEAR(spans[i].first, GetParam().spans[i].first, 4);
        EXPECT_NEAR(spans[i].second, GetParam().spans[i].second, 6);
    }
}

INSTANTIATE_TEST_SUITE_P(LineFinder, FindsLines, testing::ValuesIn(kCases));

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
