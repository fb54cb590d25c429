#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tandrel {

// Threads that each run one task at a time, started as they are needed.
class WorkerThreads {
 public:
    static constexpr std::size_t kMostThreads = 16;
    static constexpr std::size_t kMostWaiting = 256;

    using Task = std::move_only_function<void()>;

    WorkerThreads() = default;
    // Runs what was posted and joins the threads.
    ~WorkerThreads();
    WorkerThreads(const WorkerThreads&) = delete;
    WorkerThreads& operator=(const WorkerThreads&) = delete;

    // Returns at once; false, and nothing is run, when too much is waiting. `task` is taken only
    // when it will run.
    bool post(Task& task);

 private:
    void work();

    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<Task> waiting_;
    std::size_t idle_ = 0;
    bool isStopping_ = false;
    std::vector<std::thread> threads_;  // of the thread that posts
};

}  // namespace tandrel
