#pragma once

#include <cstdint>
#include <memory>

namespace tandrel {

// Memory for frames, lent out and used again once its last holder let go: touching a frame's fresh
// memory for the first time costs as much as copying it. Any thread; what is lent out may outlive
// the pool.
class FramePool {
 public:
    FramePool();

    static constexpr std::size_t kMostKept = 3;

    // `size` bytes with whatever was in them before.
    std::shared_ptr<std::uint8_t> take(std::size_t size);

 private:
    struct State;
    std::shared_ptr<State> state_;
};

}  // namespace tandrel
