#pragma once

#include <mutex>

#include "base/thread_annotations.h"

namespace tandrel {

// std::mutex with the annotations that clang's analysis needs. For small state only: nothing that
// may wait is called under it.
class CAPABILITY("mutex") Mutex {
 public:
    void lock() ACQUIRES() { mutex_.lock(); }
    void unlock() RELEASES() { mutex_.unlock(); }
    std::mutex& native() { return mutex_; }

 private:
    std::mutex mutex_;
};

class SCOPED_CAPABILITY MutexLock {
 public:
    explicit MutexLock(Mutex& mutex) ACQUIRES(mutex) : mutex_(mutex) { mutex_.lock(); }
    ~MutexLock() RELEASES() { mutex_.unlock(); }
    MutexLock(const MutexLock&) = delete;
    MutexLock& operator=(const MutexLock&) = delete;

 private:
    Mutex& mutex_;
};

}  // namespace tandrel
