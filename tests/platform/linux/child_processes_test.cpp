#include "platform/linux/child_processes.h"

#include <csignal>
#include <fstream>
#include <sstream>
#include <thread>

#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sched.h>
#include <sys/stat.h>

#include "base/file.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

using testing::HasSubstr;
using How = ProgramEnd::How;
using namespace std::chrono_literals;

ProgramEnd shell(const std::string& script, Duration timeout = 60s, std::size_t mostOutput = 1000) {
    ChildProcesses processes;
    auto end = processes.run({.program = "/bin/sh",
                              .arguments = {"-c", script},
                              .timeout = timeout,
                              .mostOutput = mostOutput,
                              .environment = {{"ADDED", "a value"}}});
    return end ? *end : ProgramEnd{How::exited, -1, end.error().message};
}

bool isAlive(const std::string& pid) { return ::kill(std::stoi(pid), 0) == 0; }

TEST(ChildProcesses, GiveStatusAndBothOutputsInOrder) {
    const ProgramEnd end = shell("echo one; echo two >&2; echo three; exit 7");
    EXPECT_EQ(end.how, How::exited);
    EXPECT_EQ(end.status, 7);
    EXPECT_EQ(end.output, "one\ntwo\nthree\n");

    const ProgramEnd killed = shell("kill -KILL $$");
    EXPECT_EQ(killed.how, How::signalled);
    EXPECT_EQ(killed.status, SIGKILL);
}

TEST(ChildProcesses, HaveNoInputNoTerminalAndTheEnvironmentGiven) {
    EXPECT_EQ(shell("cat; echo end of input").output, "end of input\n");
    EXPECT_EQ(shell("(: </dev/tty) 2>/dev/null || echo none").output, "none\n");
    EXPECT_EQ(shell("echo $ADDED").output, "a value\n");
    EXPECT_EQ(shell("ls /proc/self/fd | wc -l").output, "4\n") << "0, 1, 2 and the folder itself";
}

TEST(ChildProcesses, AStopCutsTheTimeOutShort) {
    TemporaryFolder folder;
    const std::string file = (folder.path() / "started").string();
    std::stop_source stopping;
    std::jthread stopper([&] {
        while (!std::filesystem::exists(file)) std::this_thread::yield();
        stopping.request_stop();
    });
    ChildProcesses processes;
    const auto end = processes.run({.program = "/bin/sh",
                                    .arguments = {"-c", "echo on > " + file + "; sleep 1000"},
                                    .timeout = 1000s,
                                    .stop = stopping.get_token()});
    ASSERT_TRUE(end);
    EXPECT_EQ(end->how, How::timedOut);
}

TEST(ChildProcesses, AreEndedAtTheTimeOutWithAllTheyStarted) {
    const ProgramEnd end = shell(
        "trap '' TERM; sleep 1000 & echo $!; sh -c 'trap \"\" TERM; "
        "while :; do sleep 1000; done' & echo $!; wait; wait",
        300ms);
    EXPECT_EQ(end.how, How::timedOut);
    std::istringstream pids(end.output);
    std::string pid;
    int count = 0;
    for (; pids >> pid; ++count) {
        // Killed, but perhaps not yet taken away by whoever inherited it.
        std::string state = "gone";
        for (int i = 0; i < 1000 && isAlive(pid) && state != "Z"; ++i) {
            const auto stat = readFile("/proc/" + pid + "/stat", 4096);
            if (stat) state = stat->substr(stat->rfind(')') + 2, 1);
            ::sched_yield();
        }
        EXPECT_TRUE(!isAlive(pid) || state == "Z") << pid << " " << state;
    }
    EXPECT_EQ(count, 2);
}

TEST(ChildProcesses, MayTidyUpWhenTheyAreAskedToEnd) {
    const ProgramEnd end = shell("trap 'echo tidy; exit 3' TERM; echo x; sleep 1000 & wait", 300ms);
    EXPECT_EQ(end.how, How::timedOut);
    EXPECT_EQ(end.output, "x\ntidy\n");
}

TEST(ChildProcesses, FloodsAreCutAndDoNotHoldTheProgramUp) {
    const ProgramEnd end = shell("head -c 5000000 /dev/zero; echo done >&2; exit 5");
    EXPECT_EQ(end.status, 5);
    EXPECT_EQ(end.output, std::string(1000, '\0'));
    EXPECT_EQ(shell("yes", 200ms, 4).output, "y\ny\n");
}

TEST(ChildProcesses, WhoKeepsTheOutputOpenDoesNotKeepTheCallerWaiting) {
    const ProgramEnd end = shell("sleep 1000 & echo $!");
    EXPECT_EQ(end.how, How::exited);
    ASSERT_NE(end.output, "");
    EXPECT_TRUE(isAlive(end.output)) << "a program's own background work is its own affair";
    ::kill(std::stoi(end.output), SIGKILL);
}

TEST(ChildProcesses, SayWhyTheyCannotBeStarted) {
    const TemporaryFolder folder;
    std::ofstream(folder.path() / "plain") << "#!/bin/sh\n";
    ChildProcesses processes;
    for (const auto& [name, why] : {std::pair("none", "No such file or directory"),
                                    std::pair("plain", "Permission denied")}) {
        const auto end = processes.run({.program = folder.path() / name, .arguments = {}});
        ASSERT_FALSE(end) << name;
        EXPECT_THAT(end.error().message, HasSubstr(why));
    }
}

TEST(ChildProcesses, ADetachedProgramRunsOnItsOwn) {
    const TemporaryFolder folder;
    const std::string pipe = folder.path() / "pipe";
    ASSERT_EQ(::mkfifo(pipe.c_str(), 0600), 0);
    ChildProcesses processes;
    ASSERT_TRUE(processes.startDetached(
        "sh", {"-c", "echo \"$1\" $(ps -o sid= -p $$) >\"$0\"", pipe, "a b"}));
    std::string line;
    std::getline(std::ifstream(pipe) >> std::ws, line);
    EXPECT_THAT(line, testing::StartsWith("a b"));
}

}  // namespace
}  // namespace tandrel
