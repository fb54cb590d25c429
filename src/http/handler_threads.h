#pragma once

#include <deque>
#include <functional>
#include <list>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "base/mutex.h"

namespace tandrel {

class Connection;

// The threads of one server. All run the same loop, in which they wait for events together; a
// thread that is about to block in a handler first makes sure that another one is free to go on
// with the events. So a request needs no hand-over between threads, and waiting connections cost
// none.
class HandlerThreads {
 public:
    using Job = std::shared_ptr<Connection>;

    struct Limits {
        std::size_t handlers = 0;  // running at once
        std::size_t free = 0;      // that stay when there is nothing to do
    };
    HandlerThreads(std::string name, Limits limits);
    // `loop` returns when its thread shall end. False when the system gives no thread.
    bool start(std::function<void()> loop);
    // Waits for every thread; the loops must have been told to return.
    void join();

    // Called before the handler of `job`: true when the caller runs it now. Else it is kept until a
    // handler returns.
    bool enter(Job job);
    // Called after a handler: the job that the caller runs next, if one was kept.
    Job leave();

    // Called by a thread that has had nothing to do: whether it shall end.
    bool retire();
    bool isCurrent() const;

 private:
    bool spawn() RUNS_ON(mutex_);

    const std::string name_;
    const Limits limits_;
    std::function<void()> loop_;
    mutable Mutex mutex_;
    std::list<std::thread> threads_ OWNED_BY(mutex_);
    std::vector<std::thread> retired_ OWNED_BY(mutex_);  // to be joined by the next one or `join`
    std::deque<Job> kept_ OWNED_BY(mutex_);              // bounded by the number of connections
    std::size_t free_ OWNED_BY(mutex_) = 0;
    std::size_t handling_ OWNED_BY(mutex_) = 0;
    bool joining_ OWNED_BY(mutex_) = false;
};

}  // namespace tandrel
