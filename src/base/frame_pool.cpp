#include "base/frame_pool.h"

#include <vector>

#include "base/mutex.h"

namespace tandrel {

struct FramePool::State {
    struct Block {
        std::size_t size;
        std::unique_ptr<std::uint8_t[]> bytes;
    };

    Mutex mutex;
    std::vector<Block> kept OWNED_BY(mutex);

    Block take(std::size_t size) {
        {
            const MutexLock lock(mutex);
            while (!kept.empty()) {
                Block block = std::move(kept.back());
                kept.pop_back();
                if (block.size == size) return block;
            }
        }
        return {size, std::unique_ptr<std::uint8_t[]>(new std::uint8_t[size])};
    }

    void giveBack(Block block) {
        const MutexLock lock(mutex);
        if (kept.size() < kMostKept) kept.push_back(std::move(block));
    }
};

FramePool::FramePool() : state_(std::make_shared<State>()) {}

std::shared_ptr<std::uint8_t> FramePool::take(std::size_t size) {
    auto block = state_->take(size);
    std::uint8_t* bytes = block.bytes.release();
    return {bytes, [state = state_, size](std::uint8_t* back) {
                state->giveBack({size, std::unique_ptr<std::uint8_t[]>(back)});
            }};
}

}  // namespace tandrel
