#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "reading/gray_frame.h"

namespace tandrel {

// The ink of one line: its tight box and the grey levels of paper and ink.
struct Ink {
    PixelBox box;
    int paper = 0;
    int level = 0;

    bool operator==(const Ink&) const = default;
};

// The ink in `box`; none where paper and ink hardly differ.
std::optional<Ink> findInk(const GrayFrame& frame, const PixelBox& box);

// The text on a plate such as a badge or a pressed button, whose paper is what most of the plate
// is; none on an empty one.
std::optional<Ink> findInkOnPlate(const GrayFrame& frame, const PixelBox& plate);

// Whether there is nothing but paper right beside the ink, left and right: else the line may go on
// where it was cut, by the frame's edge or by what was taken for no text.
bool standsFree(const GrayFrame& frame, const Ink& ink);

// One byte for each pixel of the ink's box, 1 where the pixel is more ink than paper.
std::vector<std::uint8_t> inkMask(const GrayFrame& frame, const Ink& ink);

}  // namespace tandrel
