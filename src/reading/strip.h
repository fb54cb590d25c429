#pragma once

#include <cstdint>
#include <vector>

#include "reading/ink.h"

namespace tandrel {

// One line of text as a recogniser takes it: dark ink on white, kRows pixels high.
struct Strip {
    static constexpr int kRows = 36;
    static constexpr int kSideMargin = 5;  // white columns on both sides
    int columns = 0;
    std::vector<std::uint8_t> pixels;  // kRows rows of `columns` bytes

    // Whether a pixel is clearly part of a letter.
    static bool isInk(std::uint8_t pixel) { return pixel < 170; }

    const std::uint8_t* row(int y) const { return &pixels[static_cast<std::size_t>(y) * columns]; }
    std::uint8_t* row(int y) { return &pixels[static_cast<std::size_t>(y) * columns]; }
};

// The ink's pixels stretched to black on white and scaled so that ink and `padding` (a share of the
// ink's height, above and below each) fill the strip.
Strip makeStrip(const GrayFrame& frame, const Ink& ink, double padding);

// Moves every pixel away from the mean around it by `amount` of its distance.
void sharpen(Strip& strip, float amount);

}  // namespace tandrel
