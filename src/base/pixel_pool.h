#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "base/pixel_buffer.h"

namespace tandrel {

// Makes the pictures of one stream in memory that is used again when a picture's last holder let
// go: new memory of a frame's size costs as much, page by page, as filling it. Any thread; pictures
// may outlive the pool.
class PixelPool {
 public:
    // Unused pictures whose memory is kept.
    static constexpr std::size_t kMostKept = 4;

    PixelPool();

    // A picture filled by `draw(first byte, bytes per row)`, which writes every pixel: what is in
    // the memory before is undefined. Sides are 1 to PixelBuffer::kLargestSide.
    PixelBuffer make(int width, int height,
                     const std::function<void(std::uint8_t*, int rowBytes)>& draw);

 private:
    class Store;
    std::shared_ptr<Store> store_;
};

}  // namespace tandrel
