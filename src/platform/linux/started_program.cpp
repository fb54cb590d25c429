#include "platform/linux/started_program.h"

#include <cerrno>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/file.h"

// glibc 2.36 declares these functions without C linkage.
extern "C" {
#include <sys/pidfd.h>
}

namespace tandrel {
namespace {

std::vector<std::string> environmentWith(const std::map<std::string, std::string>& additions) {
    std::vector<std::string> result;
    for (char** entry = environ; *entry != nullptr; ++entry) {
        const std::string_view text = *entry;
        if (!additions.contains(std::string(text.substr(0, text.find('='))))) {
            result.emplace_back(text);
        }
    }
    for (const auto& [name, value] : additions) result.push_back(fmt::format("{}={}", name, value));
    return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

class Attributes {
 public:
    Attributes() {
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGCHLD}) {
            sigaddset(&signals, signal);
        }
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setflags(
            &attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
    }
    ~Attributes() { posix_spawnattr_destroy(&attributes_); }
    Attributes(const Attributes&) = delete;
    Attributes& operator=(const Attributes&) = delete;
    const posix_spawnattr_t* get() const { return &attributes_; }

 private:
    posix_spawnattr_t attributes_{};
};

class FileActions {
 public:
    explicit FileActions(const ProgramStart& how) {
        constexpr int kThird = STDERR_FILENO + 1;
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        if (how.output < 0) {
            posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        } else {
            posix_spawn_file_actions_adddup2(&actions_, how.output, STDOUT_FILENO);
        }
        posix_spawn_file_actions_adddup2(&actions_, STDOUT_FILENO, STDERR_FILENO);
        if (how.third >= 0) posix_spawn_file_actions_adddup2(&actions_, how.third, kThird);
        posix_spawn_file_actions_addclosefrom_np(&actions_, how.third < 0 ? kThird : kThird + 1);
    }
    ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
    posix_spawn_file_actions_t actions_{};
};

}  // namespace

Result<StartedProgram> StartedProgram::start(const ProgramStart& how) {
    std::vector<std::string> words = {how.program.string()};
    words.insert(words.end(), how.arguments.begin(), how.arguments.end());
    std::vector<std::string> settings = environmentWith(how.environment);
    const Attributes attributes;
    const FileActions actions(how);
    StartedProgram started;
    const int error =
        ::posix_spawn(&started.pid_, how.program.c_str(), actions.get(), attributes.get(),
                      pointers(words).data(), pointers(settings).data());
    if (error != 0) {
        started.pid_ = -1;
        return fail(fmt::format("can't start {}: {}", how.program.string(), systemError(error)));
    }
    started.end_ = FileDescriptor(::pidfd_open(started.pid_, 0));
    if (!started.end_) {
        return fail(fmt::format("can't watch {}: {}", how.program.string(), systemError(errno)));
    }
    return started;
}

StartedProgram::~StartedProgram() {
    if (pid_ <= 0) return;
    signalAll(SIGKILL);
    reap();
}

StartedProgram::StartedProgram(StartedProgram&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)), end_(std::move(other.end_)) {}

void StartedProgram::signalAll(int signal) const { ::kill(-pid_, signal); }

siginfo_t StartedProgram::reap() {
    siginfo_t info{};
    while (::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED) != 0 && errno == EINTR) {
    }
    pid_ = -1;
    return info;
}

Result<ProgramPipe> ProgramPipe::open() {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) return fail("can't make a pipe: " + systemError(errno));
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    return ProgramPipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
}

}  // namespace tandrel
