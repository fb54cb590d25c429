#pragma once

#include <functional>
#include <memory>

#include "base/clock.h"

// Running things on the main thread, now and later.
namespace tandrel {

// Ends its timer when it goes; must go on the main thread.
class Timer {
 public:
    virtual ~Timer() = default;
};

class MainLoop {
 public:
    using Task = std::function<void()>;

    virtual ~MainLoop() = default;
    // Runs the task on the main thread soon, in call order. Any thread; returns at once.
    virtual void post(Task task) = 0;
    // Main thread only. Dropping the timer cancels it.
    [[nodiscard]] virtual std::unique_ptr<Timer> after(Duration delay, Task task) = 0;
    [[nodiscard]] virtual std::unique_ptr<Timer> every(Duration interval, Task task) = 0;
    // Main thread: runs until `quit`; returns the status given to it.
    virtual int run() = 0;
    // Any thread.
    virtual void quit(int status) = 0;
};

}  // namespace tandrel
