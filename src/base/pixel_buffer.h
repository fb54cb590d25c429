#pragma once

#include <cstdint>
#include <functional>
#include <memory>

namespace tandrel {

// One picture: 8-bit blue, green, red, alpha (ignored), rows from the top, pixel (x, y) at byte
// y * rowBytes + 4 * x. A value that shares its pixels: handing it on copies nothing, and nobody
// writes to the pixels once it is made. Any thread.
class PixelBuffer {
 public:
    static constexpr int kBytesPerPixel = 4;
    static constexpr int kLargestSide = 32767;

    PixelBuffer() = default;

    // New zeroed pixels, filled by `draw(first byte, bytes per row)`. Sides are 1 to kLargestSide.
    static PixelBuffer make(int width, int height,
                            const std::function<void(std::uint8_t*, int rowBytes)>& draw);
    // Takes over pixels that someone else allocated; `owner` keeps them alive.
    static PixelBuffer adopt(int width, int height, int rowBytes, const std::uint8_t* pixels,
                             std::shared_ptr<const void> owner);

    explicit operator bool() const { return pixels_ != nullptr; }
    int width() const { return width_; }
    int height() const { return height_; }
    int rowBytes() const { return rowBytes_; }
    const std::uint8_t* pixels() const { return pixels_; }
    const std::uint8_t* row(int y) const {
        return pixels_ + static_cast<std::ptrdiff_t>(y) * rowBytes_;
    }

    // Whether both are the very same pixels in memory.
    bool sharesPixelsWith(const PixelBuffer& other) const { return pixels_ == other.pixels_; }

    // A second set of the same pixels. Counted, since the frame path is to make at most one.
    PixelBuffer copy() const;
    static std::uint64_t copiesMade();

 private:
    int width_ = 0;
    int height_ = 0;
    int rowBytes_ = 0;
    const std::uint8_t* pixels_ = nullptr;
    std::shared_ptr<const void> owner_;
};

}  // namespace tandrel
