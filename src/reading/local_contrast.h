#pragma once

#include <cstdint>
#include <vector>

#include "reading/gray_frame.h"

namespace tandrel {

enum class InkLevel { kBright, kDark };

// A picture of part of a frame at `pixels` pixels of the frame each.
struct LocalContrast {
    int columns = 0;
    int rows = 0;
    // By how much a pixel is brighter (darker) than what is around it: nothing within areas wider
    // than the reach both ways, much on the strokes of letters, whatever lies beneath them.
    std::vector<std::uint8_t> values;
};

// `reach` is in pixels of the result.
LocalContrast localContrast(const GrayFrame& frame, const PixelBox& area, InkLevel level,
                            int pixels, int reach);

}  // namespace tandrel
