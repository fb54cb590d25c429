#include "screen/window_sources.h"

#include <gtest/gtest.h>

#include "screen/fake_windows.h"

namespace tandrel {
namespace {

TEST(WindowSources, AreSeenAsOneAndAFailureCountsOnlyWhereNothingIsSeen) {
    FakeWindows receiver;
    FakeWindows desktop;
    WindowSources both({&receiver, &desktop});
    EXPECT_TRUE(both.all()->empty());
    desktop.refuse("no display");
    EXPECT_EQ(both.all().error().message, "no display");
    receiver.show(FakeWindows::receiver(3));
    EXPECT_EQ(both.all()->size(), 1U);
    desktop.refuse("");
    desktop.show(FakeWindows::receiver(4));
    EXPECT_EQ(both.all()->size(), 2U);
    EXPECT_TRUE(both.open(4, {}));
    EXPECT_EQ(desktop.opened(), 1);
    EXPECT_EQ(receiver.opened(), 0);
    EXPECT_EQ(both.open(5, {}).error().message, "window 5 is gone");
}

}  // namespace
}  // namespace tandrel
