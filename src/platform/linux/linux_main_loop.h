#pragma once

#include <memory>

#include "platform/main_loop.h"

namespace tandrel {

// A main loop without any window toolkit: the thread that calls `run` works off posted tasks and
// timers, turn by turn, so that neither keeps the other waiting, and sleeps between them. Posting
// has no bound: what posts is paced by its own source, and nothing posts in a loop.
class LinuxMainLoop final : public MainLoop {
 public:
    explicit LinuxMainLoop(Clock& clock = systemClock());
    // What was posted and not run is dropped; timers that are still held do nothing any more.
    ~LinuxMainLoop() override;
    LinuxMainLoop(const LinuxMainLoop&) = delete;
    LinuxMainLoop& operator=(const LinuxMainLoop&) = delete;

    // A repeating timer that falls behind skips the turns it missed; `interval` is at least this.
    static constexpr Duration kShortestInterval = std::chrono::milliseconds(1);

    void post(Task task) override;
    std::unique_ptr<Timer> after(Duration delay, Task task) override;
    std::unique_ptr<Timer> every(Duration interval, Task task) override;
    // A `quit` from before counts, too. May be called again after it returned.
    int run() override;
    // Ends `run` after the task that is under way; of several statuses the first holds.
    void quit(int status) override;

 private:
    struct State;
    class LoopTimer;

    const std::shared_ptr<State> state_;
};

}  // namespace tandrel
