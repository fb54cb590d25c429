#include "platform/linux/signals.h"

#include <csignal>

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/linux/linux_main_loop.h"

namespace tandrel {
namespace {

void raise(int signal) { ::kill(::getpid(), signal); }

void deliver(StopSignals& signals, const std::function<void()>& stop) {
    if (!signals.deliver(stop)) std::exit(99);
}

void fromBeforeDelivery() {
    std::signal(SIGHUP, SIG_DFL);
    StopSignals signals;
    raise(SIGHUP);
    LinuxMainLoop loop;
    deliver(signals, [&] { loop.quit(5); });
    std::exit(loop.run());
}

void secondWhileShutdownHangs() {
    StopSignals signals;
    LinuxMainLoop loop;
    const auto hang = [] {
        raise(SIGTERM);
        while (true) ::pause();
    };
    deliver(signals, [&] { loop.post(hang); });
    raise(SIGINT);
    std::exit(loop.run());
}

void ignoredHangUp() {
    std::signal(SIGHUP, SIG_IGN);
    StopSignals signals;
    raise(SIGHUP);
    sigset_t pending;
    ::sigpending(&pending);
    std::exit(::sigismember(&pending, SIGHUP) == 0 ? 6 : 5);
}

void writeToAPeerThatWentAway() {
    StopSignals signals;
    int ends[2];
    if (::pipe(ends) != 0) std::exit(99);
    ::close(ends[0]);
    std::exit(::write(ends[1], "x", 1) == -1 ? 0 : 1);
}

void afterItsEnd() {
    deliver(*std::make_unique<StopSignals>(), [] {});
    raise(SIGTERM);
    std::exit(0);
}

// Each in a process of its own, since signals are the whole process's. That the first one stops the
// program is the program's own test.
TEST(StopSignals, EndAsTheyShould) {
    GTEST_FLAG_SET(death_test_style, "threadsafe");
    EXPECT_EXIT(fromBeforeDelivery(), testing::ExitedWithCode(5), "");
    EXPECT_EXIT(secondWhileShutdownHangs(), testing::ExitedWithCode(128 + SIGTERM),
                "second signal");
    EXPECT_EXIT(ignoredHangUp(), testing::ExitedWithCode(6), "");
    EXPECT_EXIT(writeToAPeerThatWentAway(), testing::ExitedWithCode(0), "");
    EXPECT_EXIT(afterItsEnd(), testing::KilledBySignal(SIGTERM), "");
}

}  // namespace
}  // namespace tandrel
