#include "app/first_copy.h"

#include <fstream>

#include <gtest/gtest.h>

#include "platform/linux/linux_main_loop.h"
#include "support/environment_variable.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

namespace fs = std::filesystem;

class FirstCopyTest : public testing::Test {
 protected:
    Result<std::unique_ptr<FirstCopy>> listen() {
        return FirstCopy::listen(place_, loop_, [this] {
            ++shown_;
            loop_.quit(0);
        });
    }

    TemporaryFolder folder_;
    const fs::path place_ = folder_.path() / "new/window.sock";
    LinuxMainLoop loop_;
    int shown_ = 0;
};

TEST_F(FirstCopyTest, ShowsItsWindowOnTheMainThreadForEachCopyThatAsks) {
    EXPECT_FALSE(FirstCopy::ask(place_)) << "nobody is there";
    const auto first = listen();
    ASSERT_TRUE(first) << first.error().message;
    EXPECT_EQ(fs::status(place_).permissions(), fs::perms(0600));
    for (int times = 1; times <= 3; ++times) {
        EXPECT_TRUE(FirstCopy::ask(place_));
        loop_.run();
        EXPECT_EQ(shown_, times);
    }
    EXPECT_FALSE(listen()) << "a second one at the same place";
    EXPECT_TRUE(FirstCopy::ask(place_)) << "the first one is still there";
}

TEST_F(FirstCopyTest, ACopyThatLeavesMakesRoom) {
    const auto first = listen().value();
    first->leave();
    first->leave();
    EXPECT_FALSE(FirstCopy::ask(place_));
    EXPECT_FALSE(fs::exists(place_));
    const auto second = listen();
    ASSERT_TRUE(second);
    EXPECT_TRUE(FirstCopy::ask(place_));
}

TEST_F(FirstCopyTest, WhatAKilledCopyLeftIsNoHindranceAndALongPathIsSaid) {
    fs::create_directories(place_.parent_path());
    std::ofstream(place_) << "left behind";
    EXPECT_FALSE(FirstCopy::ask(place_));
    EXPECT_TRUE(listen());
    const fs::path longer = folder_.path() / std::string(200, 'x');
    const auto refused = FirstCopy::listen(longer, loop_, [] {});
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().message, longer.string() + " is too long for a socket");
}

TEST_F(FirstCopyTest, CopiesOfOnePortMeetInTheSessionsFolder) {
    const EnvironmentVariable runtime("XDG_RUNTIME_DIR", folder_.path().string());
    EXPECT_EQ(FirstCopy::meetingPlace(7390), folder_.path() / "tandrel/window-7390.sock");
    EXPECT_NE(FirstCopy::meetingPlace(7390), FirstCopy::meetingPlace(8000));
}

}  // namespace
}  // namespace tandrel
