#include "platform/linux/child_processes.h"

#include <csignal>
#include <fstream>
#include <sstream>

#include <gmock/gmock.h>
#include <sys/stat.h>

#include "base/file.h"
#include "support/eventually.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

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

TEST(ChildProcesses, EndAsTheyDoWithTheirOutput) {
    const std::tuple<const char*, Duration, ProgramEnd> rows[] = {
        {"echo one; echo two >&2; echo three; exit 7", 60s, {How::exited, 7, "one\ntwo\nthree\n"}},
        {"kill -KILL $$", 60s, {How::signalled, SIGKILL, ""}},
        {"cat; echo end of input", 60s, {How::exited, 0, "end of input\n"}},
        {"(: </dev/tty) 2>/dev/null || echo no terminal", 60s, {How::exited, 0, "no terminal\n"}},
        {"echo $ADDED", 60s, {How::exited, 0, "a value\n"}},
        // 0, 1, 2 and the folder itself.
        {"ls /proc/self/fd | wc -l", 60s, {How::exited, 0, "4\n"}},
        // They may tidy up when they are asked to end, and floods do not hold them up.
        {"trap 'echo tidy; exit 3' TERM; echo x; sleep 1000 & wait",
         300ms,
         {How::timedOut, 3, "x\ntidy\n"}},
        {"head -c 5000000 /dev/zero; echo done >&2; exit 5",
         60s,
         {How::exited, 5, std::string(1000, '\0')}},
    };
    for (const auto& [script, timeout, wanted] : rows) {
        const ProgramEnd end = shell(script, timeout);
        EXPECT_EQ(std::tie(end.how, end.status, end.output),
                  std::tie(wanted.how, wanted.status, wanted.output))
            << script;
    }
    EXPECT_EQ(shell("yes", 200ms, 4).output, "y\ny\n");
}

TEST(ChildProcesses, AStopCutsTheTimeOutShort) {
    TemporaryFolder folder;
    const std::string file = (folder.path() / "started").string();
    std::stop_source stopping;
    const std::jthread stopper([&] {
        eventually([&] { return std::filesystem::exists(file); });
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
    // Killed, but perhaps not yet taken away by whoever inherited it.
    const auto isGone = [](const std::string& pid) {
        const auto stat = readFile("/proc/" + pid + "/stat", 4096);
        return !stat || stat->substr(stat->rfind(')') + 2, 1) == "Z";
    };
    std::istringstream pids(end.output);
    int count = 0;
    for (std::string pid; pids >> pid; ++count) {
        EXPECT_TRUE(eventually([&] { return isGone(pid); })) << pid;
    }
    EXPECT_EQ(count, 2);
}

TEST(ChildProcesses, WhoKeepsTheOutputOpenDoesNotKeepTheCallerWaiting) {
    const ProgramEnd end = shell("sleep 1000 & echo $!");
    EXPECT_EQ(end.how, How::exited);
    ASSERT_NE(end.output, "");
    EXPECT_EQ(::kill(std::stoi(end.output), SIGKILL), 0)
        << "a program's own background work is its own affair";
}

TEST(ChildProcesses, SayWhyTheyCannotBeStarted) {
    const TemporaryFolder folder;
    std::ofstream(folder.path() / "plain") << "#!/bin/sh\n";
    ChildProcesses processes;
    for (const auto& [name, why] : {std::pair("none", "No such file or directory"),
                                    std::pair("plain", "Permission denied")}) {
        const auto end = processes.run({.program = folder.path() / name, .arguments = {}});
        EXPECT_THAT(end.error().message, testing::HasSubstr(why)) << name;
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
