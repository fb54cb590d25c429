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
    struct Row {
        const char* name;
        std::uint8_t level;
        int changed;
    };
    for (const Row& row :
         {Row{"darker by 12", 88, 0}, Row{"darker by 13", 87, 1}, Row{"brighter by 13", 113, 1}}) {
        SCOPED_TRACE(row.name);
        Thumbnail after = grey(100);
        paint(after, 27, 68, 0, row.level);
        EXPECT_EQ(PointerCheck::changed(grey(100), after, PointerCheck::a), row.changed);
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
    struct Row {
        const char* name;
        std::vector<int> scores;
        std::optional<std::size_t> winner;
    };
    for (const Row& row : {
             Row{"none", {}, std::nullopt},
             Row{"one below", {2}, std::nullopt},
             Row{"one at the bound", {3}, 0},
             Row{"exactly twice", {10, 5}, std::nullopt},
             Row{"more than twice", {11, 5}, 0},
             Row{"second position", {1, 0, 9}, 2},
             Row{"tie", {9, 9}, std::nullopt},
             Row{"against a negative one", {3, -40}, 0},
         }) {
        EXPECT_EQ(clearWinner(row.scores), row.winner) << row.name;
    }
}

}  // namespace
}  // namespace tandrel
