#include "platform/linux/child_processes.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <functional>
#include <optional>
#include <string_view>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <spawn.h>
#include <sys/eventfd.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/file.h"
#include "base/file_descriptor.h"

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
    for (const auto& [name, value] : additions) result.push_back(name + "=" + value);
    return result;
}

std::vector<char*> pointers(std::vector<std::string>& texts) {
    std::vector<char*> result;
    for (std::string& text : texts) result.push_back(text.data());
    result.push_back(nullptr);
    return result;
}

// What the child starts with: its own session, default signals, none blocked.
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

// The child's files: nothing to read, and its output where `output` goes (-1: nowhere).
class FileActions {
 public:
    explicit FileActions(int output) {
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        if (output < 0) {
            posix_spawn_file_actions_addopen(&actions_, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
        } else {
            posix_spawn_file_actions_adddup2(&actions_, output, STDOUT_FILENO);
        }
        posix_spawn_file_actions_adddup2(&actions_, STDOUT_FILENO, STDERR_FILENO);
        posix_spawn_file_actions_addclosefrom_np(&actions_, STDERR_FILENO + 1);
    }
    ~FileActions() { posix_spawn_file_actions_destroy(&actions_); }
    FileActions(const FileActions&) = delete;
    FileActions& operator=(const FileActions&) = delete;
    const posix_spawn_file_actions_t* get() const { return &actions_; }

 private:
    posix_spawn_file_actions_t actions_{};
};

// A started program. Until it is reaped its number, which is its session's and its group's, too,
// passes on to no other.
class Child {
 public:
    static Result<Child> start(const ProgramRun& run, int output) {
        std::vector<std::string> words = {run.program.string()};
        words.insert(words.end(), run.arguments.begin(), run.arguments.end());
        std::vector<std::string> settings = environmentWith(run.environment);
        const Attributes attributes;
        const FileActions actions(output);
        Child child;
        const int error =
            ::posix_spawn(&child.pid_, run.program.c_str(), actions.get(), attributes.get(),
                          pointers(words).data(), pointers(settings).data());
        if (error != 0) {
            child.pid_ = -1;
            return fail(
                fmt::format("can't start {}: {}", run.program.string(), systemError(error)));
        }
        child.end_ = FileDescriptor(::pidfd_open(child.pid_, 0));
        if (!child.end_) {
            return fail(
                fmt::format("can't watch {}: {}", run.program.string(), systemError(errno)));
        }
        return child;
    }
    ~Child() {
        if (pid_ > 0) {
            signalAll(SIGKILL);
            reap();
        }
    }
    Child(Child&& other) noexcept
        : pid_(std::exchange(other.pid_, -1)), end_(std::move(other.end_)) {}
    Child& operator=(Child&&) = delete;

    // Readable once the program has ended.
    int end() const { return end_.get(); }
    void signalAll(int signal) const { ::kill(-pid_, signal); }
    siginfo_t reap() {
        siginfo_t info{};
        while (::waitid(P_PID, static_cast<id_t>(pid_), &info, WEXITED) != 0 && errno == EINTR) {
        }
        pid_ = -1;
        return info;
    }

 private:
    Child() = default;

    pid_t pid_ = -1;
    FileDescriptor end_;
};

// The reading end of a child's output.
class Output {
 public:
    Output(FileDescriptor pipe, std::size_t most) : pipe_(std::move(pipe)), most_(most) {}

    int descriptor() const { return pipe_.get(); }  // -1 once every writer has closed its end

    // Takes what one read gives; false when there is nothing now or nothing more.
    bool take() {
        char chunk[16 * 1024];
        const ssize_t count = ::read(pipe_.get(), chunk, sizeof chunk);
        if (count < 0) return errno == EINTR;
        if (count == 0) {
            pipe_.reset();
            return false;
        }
        text_.append(chunk, std::min(static_cast<std::size_t>(count), most_ - text_.size()));
        return true;
    }
    // What was written before the program's end. What it left behind may go on writing, so no more
    // is taken than a pipe holds.
    void takeRest() {
        constexpr int kReadsOfAFullPipe = 64;
        for (int i = 0; i < kReadsOfAFullPipe && pipe_ && take(); ++i) {
        }
    }
    std::string text() && { return std::move(text_); }

 private:
    FileDescriptor pipe_;
    const std::size_t most_;
    std::string text_;
};

// Readable once a stop was requested.
class StopEvent {
 public:
    explicit StopEvent(std::stop_token stop)
        : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)),
          onStop_(std::move(stop), [this] { ::eventfd_write(event_.get(), 1); }) {}
    int descriptor() const { return event_.get(); }

 private:
    const FileDescriptor event_;
    const std::stop_callback<std::function<void()>> onStop_;
};

int millisecondsUntil(TimePoint deadline) {
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(deadline - systemClock().now());
    return static_cast<int>(std::clamp<std::int64_t>(left.count(), 0, 60'000));
}

// Reads output until the program has ended, or until the deadline or a stop (-1: there is none);
// says whether it has ended.
bool awaitEnd(const Child& child, Output& output, TimePoint deadline, int stop) {
    while (true) {
        pollfd waits[] = {
            {child.end(), POLLIN, 0}, {output.descriptor(), POLLIN, 0}, {stop, POLLIN, 0}};
        const int wait = millisecondsUntil(deadline);
        const int ready = ::poll(waits, std::size(waits), wait);
        if (ready < 0 && errno != EINTR) return false;
        if (ready > 0 && waits[0].revents != 0) return true;
        if (ready > 0 && waits[2].revents != 0) return false;
        if (ready > 0 && waits[1].revents != 0) output.take();
        if (systemClock().now() >= deadline) return false;
    }
}

ProgramEnd endOf(const siginfo_t& info) {
    ProgramEnd end;
    if (info.si_code != CLD_EXITED) end.how = ProgramEnd::How::signalled;
    end.status = info.si_status;
    return end;
}

}  // namespace

Result<ProgramEnd> ChildProcesses::run(const ProgramRun& run) {
    int ends[2];
    if (::pipe2(ends, O_CLOEXEC) != 0) {
        return fail(fmt::format("can't start {}: {}", run.program.string(), systemError(errno)));
    }
    Output output(FileDescriptor(ends[0]), run.mostOutput);
    FileDescriptor writing(ends[1]);
    ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
    Child child = TRY(Child::start(run, writing.get()));
    writing.reset();

    const StopEvent stop(run.stop);
    const TimePoint deadline = systemClock().now() + run.timeout;
    const bool ended = awaitEnd(child, output, deadline, stop.descriptor());
    if (!ended) {
        child.signalAll(SIGTERM);
        awaitEnd(child, output, systemClock().now() + kGrace, -1);
        child.signalAll(SIGKILL);
    }
    output.takeRest();
    ProgramEnd end = endOf(child.reap());
    if (!ended) end.how = ProgramEnd::How::timedOut;
    end.output = std::move(output).text();
    return end;
}

Result<void> ChildProcesses::startDetached(const std::string& program,
                                           const std::vector<std::string>& arguments) {
    // The shell ends at once and is reaped; init inherits what it started.
    ProgramRun run{.program = "/bin/sh", .arguments = {"-c", R"("$0" "$@" &)", program}};
    run.arguments.insert(run.arguments.end(), arguments.begin(), arguments.end());
    Child child = TRY(Child::start(run, -1));
    child.reap();
    return {};
}

}  // namespace tandrel
