#include "platform/linux/signals.h"

#include <csignal>

#include <gtest/gtest.h>
#include <unistd.h>

#include "platform/linux/linux_main_loop.h"

namespace tandrel {
namespace {

// Each case runs in a process of its own, since signals are the whole process's.
class StopSignalsTest : public testing::Test {
 protected:
    StopSignalsTest() { GTEST_FLAG_SET(death_test_style, "threadsafe"); }

    static void raise(int signal) { ::kill(::getpid(), signal); }

    [[noreturn]] static void runUntilStopped(StopSignals& signals, LinuxMainLoop& loop) {
        if (!signals.deliver([&] { loop.quit(5); })) std::exit(99);
        std::exit(loop.run());
    }
};

TEST_F(StopSignalsTest, TheFirstSignalRunsStop) {
    for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
        EXPECT_EXIT(
            {
                StopSignals signals;
                LinuxMainLoop loop;
                loop.post([signal] { raise(signal); });
                runUntilStopped(signals, loop);
            },
            testing::ExitedWithCode(5), "");
    }
}

TEST_F(StopSignalsTest, ASignalFromBeforeDeliveryCounts) {
    EXPECT_EXIT(
        {
            StopSignals signals;
            raise(SIGTERM);
            LinuxMainLoop loop;
            runUntilStopped(signals, loop);
        },
        testing::ExitedWithCode(5), "");
}

TEST_F(StopSignalsTest, ASecondSignalCutsAHangingShutdownShort) {
    EXPECT_EXIT(
        {
            StopSignals signals;
            LinuxMainLoop loop;
            const auto hang = [] {
                raise(SIGTERM);
                while (true) ::pause();
            };
            if (!signals.deliver([&] { loop.post(hang); })) std::exit(99);
            raise(SIGINT);
            std::exit(loop.run());
        },
        testing::ExitedWithCode(128 + SIGTERM), "second signal");
}

TEST_F(StopSignalsTest, AnIgnoredHangUpStaysIgnored) {
    EXPECT_EXIT(
        {
            std::signal(SIGHUP, SIG_IGN);
            StopSignals signals;
            LinuxMainLoop loop;
            raise(SIGHUP);
            if (!signals.deliver([&] { loop.quit(5); })) std::exit(99);
            loop.post([&] { loop.quit(6); });
            std::exit(loop.run());
        },
        testing::ExitedWithCode(6), "");
}

TEST_F(StopSignalsTest, AWriteToAPeerThatWentAwayIsAnErrorOnly) {
    EXPECT_EXIT(
        {
            StopSignals signals;
            int ends[2];
            if (::pipe(ends) != 0) std::exit(99);
            ::close(ends[0]);
            std::exit(::write(ends[1], "x", 1) == -1 ? 0 : 1);
        },
        testing::ExitedWithCode(0), "");
}

TEST_F(StopSignalsTest, EndsItsThreadAndUnblocks) {
    EXPECT_EXIT(
        {
            {
                StopSignals signals;
                if (!signals.deliver([] {})) std::exit(99);
            }
            raise(SIGTERM);
            std::exit(0);
        },
        testing::KilledBySignal(SIGTERM), "");
}

}  // namespace
}  // namespace tandrel
