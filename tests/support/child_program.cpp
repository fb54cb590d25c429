#include "support/child_program.h"

#include <csignal>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tandrel {
namespace {

constexpr int kPatienceMilliseconds = 60'000;

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

}  // namespace

ChildProgram::ChildProgram(const std::vector<std::string>& arguments,
                           const Environment& environment) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) throw std::runtime_error("pipe");
    std::vector<std::string> words = arguments;
    std::vector<std::string> settings;
    for (const auto& [name, value] : environment) settings.push_back(name + "=" + value);
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, ends[1], STDERR_FILENO);
    const int error = ::posix_spawn(&pid_, words.front().c_str(), &actions, nullptr,
                                    pointers(words).data(), pointers(settings).data());
    posix_spawn_file_actions_destroy(&actions);
    ::close(ends[1]);
    pipe_ = ends[0];
    if (error != 0) throw std::runtime_error("cannot start " + words.front());
}

ChildProgram::~ChildProgram() {
    if (!status_) {
        ::kill(pid_, SIGKILL);
        ::waitpid(pid_, nullptr, 0);
    }
    ::close(pipe_);
}

bool ChildProgram::readMore() {
    pollfd waiting{pipe_, POLLIN, 0};
    if (::poll(&waiting, 1, kPatienceMilliseconds) <= 0)
        throw std::runtime_error("no output: " + output_);
    char chunk[4096];
    const ssize_t count = ::read(pipe_, chunk, sizeof chunk);
    if (count <= 0) return false;
    output_.append(chunk, static_cast<std::size_t>(count));
    return true;
}

bool ChildProgram::awaitOutput(const std::string& text) {
    while (output_.find(text) == std::string::npos) {
        if (!readMore()) return false;
    }
    return true;
}

void ChildProgram::signal(int number) const { ::kill(pid_, number); }

int ChildProgram::wait() {
    while (readMore()) {
    }
    if (!status_) {
        int status = 0;
        ::waitpid(pid_, &status, 0);
        status_ = WIFSIGNALED(status) ? -WTERMSIG(status) : WEXITSTATUS(status);
    }
    return *status_;
}

ProgramResult runProgramToEnd(const std::vector<std::string>& arguments,
                              const ChildProgram::Environment& environment) {
    ChildProgram program(arguments, environment);
    const int status = program.wait();
    return {status, program.output()};
}

}  // namespace tandrel
