#pragma once

#include <cstdint>
#include <vector>

#include "base/pixel_buffer.h"
#include "reading/changed_rows.h"
#include "reading/pixel_box.h"

namespace tandrel {

// The brightness of a frame, one byte a pixel, rows without padding.
class GrayFrame {
 public:
    GrayFrame() = default;
    GrayFrame(int width, int height)
        : width_(width), height_(height), pixels_(static_cast<std::size_t>(width) * height) {}

    // Rec. 601 luma of every pixel.
    static GrayFrame from(const PixelBuffer& image);
    // The same for the changed rows alone; the image has this frame's size.
    void update(const PixelBuffer& image, const ChangedRows& changed);

    int width() const { return width_; }
    int height() const { return height_; }
    PixelBox bounds() const { return {0, 0, width_, height_}; }
    const std::uint8_t* row(int y) const { return &pixels_[static_cast<std::size_t>(y) * width_]; }
    std::uint8_t* row(int y) { return &pixels_[static_cast<std::size_t>(y) * width_]; }

 private:
    int width_ = 0;
    int height_ = 0;
    std::vector<std::uint8_t> pixels_;
};

}  // namespace tandrel
