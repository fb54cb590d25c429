#pragma once

#include <csignal>
#include <filesystem>
#include <map>
#include <string>
#include <vector>

#include <sys/types.h>

#include "base/file_descriptor.h"
#include "base/result.h"

namespace tandrel {

// What a program is started with: a session of its own, nothing to read, default signals of which
// none is blocked, and no other descriptor of ours.
struct ProgramStart {
    std::filesystem::path program;
    std::vector<std::string> arguments = {};
    std::map<std::string, std::string> environment = {};  // beside ours
    int output = -1;  // takes what it prints and complains; -1: none
    int third = -1;   // becomes its descriptor 3; -1: none
};

// A program that was started here. Until it is reaped its number, which is its session's and its
// group's, too, passes on to no other.
class StartedProgram {
 public:
    static Result<StartedProgram> start(const ProgramStart& how);
    // Kills it and whatever it started that has not left its session, unless it was reaped.
    ~StartedProgram();
    StartedProgram(StartedProgram&& other) noexcept;
    StartedProgram& operator=(StartedProgram&&) = delete;
    StartedProgram(const StartedProgram&) = delete;
    StartedProgram& operator=(const StartedProgram&) = delete;

    pid_t pid() const { return pid_; }  // -1 once it was reaped
    // Readable once the program has ended.
    int end() const { return end_.get(); }
    void signalAll(int signal) const;
    // Waits for its end.
    siginfo_t reap();

 private:
    StartedProgram() = default;

    pid_t pid_ = -1;
    FileDescriptor end_;
};

// A pipe that a started program writes into; its reader never blocks.
struct ProgramPipe {
    FileDescriptor reading;
    FileDescriptor writing;

    static Result<ProgramPipe> open();
};

}  // namespace tandrel
