#pragma once

#include <functional>

#include "base/serial_queue.h"

namespace tandrel {

// Pieces of work that the caller and one helping thread do together. The helper takes a piece
// whenever the system lets it run, so on a busy machine the caller simply does them all.
class SharedWork {
 public:
    explicit SharedWork(const char* label) : queue_(label) {}

    // Calls `piece` with 0 to count - 1, each once, and returns when all calls have returned.
    void run(int count, const std::function<void(int)>& piece);

 private:
    SerialQueue queue_;
};

}  // namespace tandrel
