#pragma once

#include <functional>
#include <future>
#include <memory>
#include <string>
#include <thread>
#include <type_traits>

#include "base/clock.h"
#include "base/thread_annotations.h"

namespace tandrel {

// One named thread that runs tasks one after another. State that belongs to a queue is touched by
// its tasks only, so it needs no lock. A task posted with `post` has no bound on its number: what
// posts is paced by its own source (reports, frames, callbacks), and nothing posts in a loop.
//
// `post` and `postAfter` may be called from any thread, `sync` from any thread but the queue's own.
class CAPABILITY("queue") SerialQueue {
 public:
    using Task = std::move_only_function<void()>;

    explicit SerialQueue(std::string label, Clock& clock = systemClock());
    // Stops: runs what was posted before, drops what was to run later, joins the thread.
    ~SerialQueue();
    SerialQueue(const SerialQueue&) = delete;
    SerialQueue& operator=(const SerialQueue&) = delete;

    const std::string& label() const { return label_; }

    // Returns at once. After `stop` the task is dropped.
    void post(Task task);
    void postAfter(Duration delay, Task task);

    // Waits until `function` has run on the queue and returns its result. After `stop` the function
    // runs on the caller's thread, one caller at a time.
    template <typename Function>
    auto sync(Function&& function) -> std::invoke_result_t<Function> {
        using Value = std::invoke_result_t<Function>;
        std::packaged_task<Value()> task(std::forward<Function>(function));
        auto result = task.get_future();
        syncTask([&task] { task(); });
        return result.get();
    }

    // Whether the caller runs on this queue.
    bool isCurrent() const;
    // States the same to clang's analysis at the head of a task; wrong use ends the program.
    void assertCurrent() const ASSERTS_ON(this);

    void stop();

 private:
    struct State;
    void syncTask(Task task);

    const std::string label_;
    const std::shared_ptr<State> state_;
    std::thread thread_;
};

}  // namespace tandrel
