#include "helper/worker_threads.h"

#include <pthread.h>

namespace tandrel {

WorkerThreads::~WorkerThreads() {
    {
        std::lock_guard lock(mutex_);
        isStopping_ = true;
    }
    changed_.notify_all();
    for (std::thread& thread : threads_) thread.join();
}

bool WorkerThreads::post(Task& task) {
    {
        std::lock_guard lock(mutex_);
        if (waiting_.size() >= kMostWaiting) return false;
        waiting_.push_back(std::move(task));
        if (waiting_.size() > idle_ && threads_.size() < kMostThreads) {
            threads_.emplace_back([this] { work(); });
        }
    }
    changed_.notify_one();
    return true;
}

void WorkerThreads::work() {
    ::pthread_setname_np(::pthread_self(), "tandrel.call");
    std::unique_lock lock(mutex_);
    while (true) {
        ++idle_;
        changed_.wait(lock, [this] { return isStopping_ || !waiting_.empty(); });
        --idle_;
        if (waiting_.empty()) return;
        Task task = std::move(waiting_.front());
        waiting_.pop_front();
        lock.unlock();
        task();
        task = nullptr;
        lock.lock();
    }
}

}  // namespace tandrel
