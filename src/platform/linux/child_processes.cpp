#include "platform/linux/child_processes.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <functional>
#include <optional>
#include <utility>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include "base/file_descriptor.h"
#include "platform/linux/started_program.h"

namespace tandrel {
namespace {

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
bool awaitEnd(const StartedProgram& child, Output& output, TimePoint deadline, int stop) {
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
    ProgramPipe pipe = TRY(ProgramPipe::open());
    StartedProgram child = TRY(StartedProgram::start({.program = run.program,
                                                      .arguments = run.arguments,
                                                      .environment = run.environment,
                                                      .output = pipe.writing.get()}));
    pipe.writing.reset();
    Output output(std::move(pipe.reading), run.mostOutput);

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
    ProgramStart shell{.program = "/bin/sh", .arguments = {"-c", R"("$0" "$@" &)", program}};
    shell.arguments.insert(shell.arguments.end(), arguments.begin(), arguments.end());
    StartedProgram child = TRY(StartedProgram::start(shell));
    child.reap();
    return {};
}

}  // namespace tandrel
