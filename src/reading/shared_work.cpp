#include "reading/shared_work.h"

#include <atomic>
#include <memory>

namespace tandrel {

namespace {

// Outlives the caller's wait: a helper that comes too late finds no piece left and touches nothing
// else.
struct Pieces {
    explicit Pieces(int total) : count(total), unfinished(total) {}

    void work(const std::function<void(int)>& piece) {
        for (int i; (i = next.fetch_add(1)) < count;) {
            piece(i);
            if (unfinished.fetch_sub(1) == 1) unfinished.notify_all();
        }
    }

    const int count;
    std::atomic<int> next = 0;
    std::atomic<int> unfinished;
};

}  // namespace

void SharedWork::run(int count, const std::function<void(int)>& piece) {
    const auto pieces = std::make_shared<Pieces>(count);
    // The helper uses the caller's function only while a piece is unfinished, and so while the
    // caller waits.
    if (count > 1) queue_.post([pieces, &piece] { pieces->work(piece); });
    pieces->work(piece);
    for (int left; (left = pieces->unfinished.load()) > 0;) pieces->unfinished.wait(left);
}

}  // namespace tandrel
