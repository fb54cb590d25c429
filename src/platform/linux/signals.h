#pragma once

#include <csignal>
#include <functional>
#include <thread>

#include "base/file_descriptor.h"
#include "base/result.h"

namespace tandrel {

// Turns the signals that end a program into a call: SIGINT (Ctrl-C), SIGTERM and, unless it was
// ignored at start (nohup), SIGHUP. They are blocked for the whole process, so this
// is made at the head of main, before any other thread; programs that are started later inherit the
// blocked signals and must be given an empty mask. SIGPIPE is ignored from then on: a peer that
// goes away shows as an error of the write.
class StopSignals {
 public:
    StopSignals();
    // Ends the thread and restores the caller's signal mask.
    ~StopSignals();
    StopSignals(const StopSignals&) = delete;
    StopSignals& operator=(const StopSignals&) = delete;

    // From now on, and for signals that came before, the first one runs `stop` on a thread of its
    // own, since the main one may be busy for seconds; `stop` returns at once and what it uses
    // outlives this object. Another signal ends the process at once with status 128 + its number,
    // for a shutdown that hangs. Once.
    Result<void> deliver(std::function<void()> stop);

 private:
    void watch(const std::function<void()>& stop) const;

    sigset_t signals_{};
    sigset_t previousMask_{};
    FileDescriptor arrivals_;
    FileDescriptor end_;
    std::thread thread_;
};

}  // namespace tandrel
