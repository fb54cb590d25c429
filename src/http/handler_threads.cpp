#include "http/handler_threads.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include <pthread.h>

namespace tandrel {

HandlerThreads::HandlerThreads(std::string name, Limits limits)
    : name_(std::move(name)), limits_(limits) {}

bool HandlerThreads::start(std::function<void()> loop) {
    loop_ = std::move(loop);
    MutexLock lock(mutex_);
    return spawn();
}

bool HandlerThreads::spawn() {
    if (joining_) return false;
    try {
        threads_.emplace_back([this] {
            pthread_setname_np(pthread_self(), name_.c_str());
            loop_();
        });
    } catch (const std::system_error&) {
        return false;
    }
    ++free_;
    return true;
}

bool HandlerThreads::enter(Job job) {
    MutexLock lock(mutex_);
    const bool room = handling_ < limits_.handlers;
    // Without a single handler running nobody would come back for a kept job.
    if (room && (free_ > 1 || spawn() || handling_ == 0)) {
        --free_;
        ++handling_;
        return true;
    }
    kept_.push_back(std::move(job));
    return false;
}

HandlerThreads::Job HandlerThreads::leave() {
    MutexLock lock(mutex_);
    if (!kept_.empty()) {
        Job next = std::move(kept_.front());
        kept_.pop_front();
        return next;
    }
    --handling_;
    ++free_;
    return nullptr;
}

bool HandlerThreads::retire() {
    std::vector<std::thread> earlier;
    {
        MutexLock lock(mutex_);
        if (free_ <= limits_.free || joining_) return false;
        const auto self =
            std::ranges::find(threads_, std::this_thread::get_id(), &std::thread::get_id);
        --free_;
        earlier.swap(retired_);
        retired_.push_back(std::move(*self));
        threads_.erase(self);
    }
    for (std::thread& thread : earlier) thread.join();
    return true;
}

void HandlerThreads::join() {
    std::list<std::thread> running;
    std::vector<std::thread> retired;
    {
        MutexLock lock(mutex_);
        joining_ = true;
        running.swap(threads_);
        retired.swap(retired_);
    }
    for (std::thread& thread : running) thread.join();
    for (std::thread& thread : retired) thread.join();
    MutexLock lock(mutex_);
    kept_.clear();
}

bool HandlerThreads::isCurrent() const {
    MutexLock lock(mutex_);
    return std::ranges::find(threads_, std::this_thread::get_id(), &std::thread::get_id) !=
           threads_.end();
}

}  // namespace tandrel
