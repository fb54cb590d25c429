#include "reading/strip_memory.h"

#include <random>

#include <gtest/gtest.h>

#include "reading/drawn_frame.h"
#include "reading/line_finder.h"

namespace tandrel {
namespace {

GrayFrame drawn(const std::string& text, double points, int density = 3) {
    DrawnFrame frame(390 * density, 60 * density, density, kWhite);
    frame.text(20, 40, text, {.points = points});
    return GrayFrame::from(frame.frame());
}

Strip stripOf(const GrayFrame& frame) {
    const auto lines = findLines(frame);
    EXPECT_EQ(lines.size(), 1U);
    return makeStrip(frame, lines.at(0).ink, 0.15);
}

GrayFrame withNoise(GrayFrame frame, int most, unsigned seed) {
    std::mt19937 random(seed);
    for (int y = 0; y < frame.height(); ++y) {
        for (int x = 0; x < frame.width(); ++x) {
            const int change = static_cast<int>(random() % (2 * most + 1)) - most;
            frame.row(y)[x] =
                static_cast<std::uint8_t>(std::clamp(frame.row(y)[x] + change, 0, 255));
        }
    }
    return frame;
}

constexpr std::pair<const char*, const char*> kChanges[] = {
    {"€13.50", "€18.50"},
    {"€10.50", "€18.50"},
    {"$5.20", "$6.20"},
    {"1,000.00", "1.000.00"},
    {"1,000", "1.000"},
    {"€7.10", "€1.10"},
    {"€9.99", "£9.99"},
    {"Total 80", "Total 60"},
    {"Pay €12.50", "Pay €12.60"},
    {"c1", "e1"},
    {"Sent to Anna", "Sent to Anne"},
    {"2.50", "2:50"},
};

TEST(StripMemory, neverTakesAChangedCharacterForNoise) {
    for (const double points : {11.0, 13.0, 17.0, 24.0, 34.0}) {
        for (const auto& [before, after] : kChanges) {
            const Strip changed = stripOf(withNoise(drawn(after, points), 3, 5));
            EXPECT_FALSE(differOnlyByNoise(changed, stripOf(drawn(before, points))))
                << before << " and " << after << " at " << points;
        }
    }
}

TEST(StripMemory, toleratesTheNoiseOfVideo) {
    for (const auto& [before, after] : kChanges) {
        const GrayFrame frame = drawn(before, 17);
        EXPECT_TRUE(
            differOnlyByNoise(stripOf(withNoise(frame, 6, 1)), stripOf(withNoise(frame, 6, 2))))
            << before;
    }
}

TEST(StripMemory, findsTheSamePixelsWhereverTheyAreAndSimilarOnesInTheirPlaceAlone) {
    StripMemory memory;
    const GrayFrame frame = drawn("Balance", 17);
    const auto line = findLines(frame).at(0).ink;
    const Strip strip = makeStrip(frame, line, 0.15);
    memory.remember(hashOf(frame, line), line.box, strip, {.text = "Balance", .confidence = 1});
    EXPECT_EQ(memory.find(hashOf(frame, line)).value().text, "Balance");

    const GrayFrame other = drawn("Balanca", 17);
    const auto otherLine = findLines(other).at(0).ink;
    EXPECT_FALSE(memory.find(hashOf(other, otherLine)));
    EXPECT_FALSE(memory.findSimilar(otherLine.box, makeStrip(other, otherLine, 0.15)));

    EXPECT_TRUE(memory.findSimilar(line.box, strip));
    const PixelBox below{line.box.left, line.box.top + 40, line.box.right, line.box.bottom + 40};
    EXPECT_FALSE(memory.findSimilar(below, strip));
}

TEST(StripMemory, forgetsTheOldestWhenItIsFull) {
    StripMemory memory;
    Strip strip;
    strip.columns = 8;
    strip.pixels.assign(8 * Strip::kRows, 255);
    const int count = static_cast<int>(StripMemory::kMostStrips) + 50;
    auto hashAt = [](int i) { return PictureHash{8, 8, static_cast<std::uint64_t>(i), 1}; };
    for (int i = 0; i < count; ++i) {
        memory.remember(hashAt(i), {0, i, 8, i + 8}, strip, {.text = "x", .confidence = 1});
    }
    EXPECT_EQ(memory.size(), StripMemory::kMostStrips);
    EXPECT_FALSE(memory.find(hashAt(0)));
    EXPECT_TRUE(memory.find(hashAt(count - 1)));
    // Both sums must agree: the first alone is no proof.
    EXPECT_FALSE(memory.find({8, 8, static_cast<std::uint64_t>(count - 1), 2}));
}

}  // namespace
}  // namespace tandrel
