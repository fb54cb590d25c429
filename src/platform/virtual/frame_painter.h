#pragma once

#include <cstdint>
#include <vector>

#include "base/frame_pool.h"
#include "base/pixel_buffer.h"
#include "platform/virtual/fonts.h"
#include "platform/virtual/phone_model.h"

namespace tandrel {

// Turns what a phone shows into frames. The screen without the pointer is drawn when it changes; a
// pointer that only moved is laid over a copy of it. One thread at a time.
class FramePainter {
 public:
    // `scale` is the pixels a point has.
    FramePainter(Fonts& fonts, double scale) : fonts_(fonts), scale_(scale) {}

    // The model's frame as it is now; the very same pixels as before if nothing changed.
    PixelBuffer paint(PhoneModel& model);

 private:
    void paintScreen(const PhoneModel::Look& look);
    PixelBuffer paintPointer(const PhoneModel::Look& look);

    Fonts& fonts_;
    const double scale_;
    FramePool pool_;
    std::vector<std::uint8_t> screen_;
    int width_ = 0;
    int height_ = 0;
    std::uint64_t screenRevision_ = 0;
    std::uint64_t pointerRevision_ = 0;
    PixelBuffer latest_;
};

// All black.
PixelBuffer blackFrame(int width, int height);

}  // namespace tandrel
