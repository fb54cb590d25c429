#include "devices/pointer_check.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

using Thumbnail = PointerCheck::Thumbnail;

Thumbnail grey(std::uint8_t level) {
    return Thumbnail(static_cast<std::size_t>(PointerCheck::width * PointerCheck::height), level);
}

// A square of side 2 * reach + 1 around a pixel.
void paint(Thumbnail& picture, int cx, int cy, int reach, std::uint8_t level) {
    for (int y = cy - reach; y <= cy + reach; ++y) {
        for (int x = cx - reach; x <= cx + reach; ++x) {
            picture[static_cast<std::size_t>(y * PointerCheck::width + x)] = level;
        }
    }
}

TEST(PointerCheck, ChangeStartsAtThirteenLevels) {
    for (const auto& [level, changed] : {std::pair{88, 0}, {87, 1}, {113, 1}}) {
        Thumbnail after = grey(100);
        paint(after, 27, 68, 0, static_cast<std::uint8_t>(level));
        EXPECT_EQ(PointerCheck::changed(grey(100), after, PointerCheck::a), changed) << level;
    }
}

TEST(PointerCheck, WindowIsFifteenWideAndClippedAtTheEdges) {
    const Thumbnail before = grey(0);
    const Thumbnail after = grey(255);
    EXPECT_EQ(PointerCheck::changed(before, after, {0.5, 0.5}), 15 * 15);
    EXPECT_EQ(PointerCheck::changed(before, after, {0.99, 0.5}), 8 * 15);  // columns 82 to 89
    EXPECT_EQ(PointerCheck::changed(before, after, {0.0, 0.0}), 8 * 8);
}

TEST(PointerCheck, OnlyAJumpBetweenTheTwoPointsCounts) {
    const Thumbnail still = grey(100);
    Thumbnail atA = still;
    paint(atA, 27, 68, 2, 200);
    Thumbnail atB = still;
    paint(atB, 63, 126, 2, 200);
    EXPECT_EQ(PointerCheck::score(atA, atB), 25);
    EXPECT_TRUE(PointerCheck::pointerMoved(atA, atB));

    EXPECT_FALSE(PointerCheck::pointerMoved(still, still));
    EXPECT_FALSE(PointerCheck::pointerMoved(still, atB)) << "a pointer that only appeared";
    EXPECT_EQ(PointerCheck::score(grey(0), grey(255)), 0) << "the whole picture changed";
}

TEST(PointerCheck, AWinnerNeedsThreeAndMoreThanTwiceTheSecond) {
    const std::pair<std::vector<int>, std::optional<std::size_t>> rows[] = {
        {{}, std::nullopt},      {{2}, std::nullopt}, {{3}, 0},
        {{10, 5}, std::nullopt}, {{11, 5}, 0},        {{1, 0, 9}, 2},
        {{9, 9}, std::nullopt},  {{3, -40}, 0},
    };
    for (const auto& [scores, winner] : rows) {
        EXPECT_EQ(clearWinner(scores), winner) << testing::PrintToString(scores);
    }
}

}  // namespace
}  // namespace tandrel
