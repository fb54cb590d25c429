#include "screen/picture_watch.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

WindowThumbnail grey(int level) {
    WindowThumbnail thumbnail;
    thumbnail.fill(static_cast<std::uint8_t>(level));
    return thumbnail;
}

TEST(ChangeTimes, EachPictureIsComparedWithTheOneBefore) {
    ChangeTimes changes;
    // A slow fade never differs enough from one frame to the next.
    for (int i = 0; i < 10; ++i) changes.add(grey(10 * i), 100 * i);
    EXPECT_TRUE(changes.after(0).empty());
    changes.add(grey(200), 1000);
    changes.add(grey(200), 1100);
    changes.add(grey(20), 1200);
    EXPECT_EQ(changes.after(0), (std::vector<double>{1000, 1200}));
    EXPECT_EQ(changes.after(1000), std::vector<double>{1200});
    EXPECT_TRUE(changes.after(1200).empty());
}

TEST(ChangeTimes, OnlyTheLatest400AreKept) {
    ChangeTimes changes;
    for (int i = 0; i <= 401; ++i) changes.add(grey(i % 2 * 100), i);
    const std::vector<double> times = changes.after(-1);
    ASSERT_EQ(times.size(), 400u);
    EXPECT_EQ(times.front(), 2);
    EXPECT_EQ(times.back(), 401);
}

}  // namespace
}  // namespace tandrel
