#include "base/pixel_buffer.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <cstddef>
#include <cstring>

namespace tandrel {
namespace {
std::atomic<std::uint64_t> copies{0};
}

PixelBuffer PixelBuffer::make(int width, int height,
                              const std::function<void(std::uint8_t*, int)>& draw) {
    assert(width > 0 && height > 0 && width <= kLargestSide && height <= kLargestSide);
    const int rowBytes = width * kBytesPerPixel;
    const auto size = static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(height);
    const std::shared_ptr<std::uint8_t[]> pixels(new std::uint8_t[size]());
    if (draw) draw(pixels.get(), rowBytes);
    return adopt(width, height, rowBytes, pixels.get(), pixels);
}

PixelBuffer PixelBuffer::adopt(int width, int height, int rowBytes, const std::uint8_t* pixels,
                               std::shared_ptr<const void> owner) {
    PixelBuffer buffer;
    buffer.width_ = width;
    buffer.height_ = height;
    buffer.rowBytes_ = rowBytes;
    buffer.pixels_ = pixels;
    buffer.owner_ = std::move(owner);
    return buffer;
}

PixelBuffer PixelBuffer::copy() const {
    ++copies;
    return make(width_, height_, [this](std::uint8_t* to, int toRowBytes) {
        const auto length = static_cast<std::size_t>(std::min(toRowBytes, rowBytes_));
        for (int y = 0; y < height_; ++y) {
            std::memcpy(to + static_cast<std::ptrdiff_t>(y) * toRowBytes, row(y), length);
        }
    });
}

std::uint64_t PixelBuffer::copiesMade() { return copies; }

}  // namespace tandrel
