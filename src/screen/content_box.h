#pragma once

#include <optional>

#include "image/pixels.h"

namespace tandrel {

// The bounding box of what is not black inside the rectangle, found from a coarse grid of samples
// and then moved outward line by line. None when the grid meets nothing but black.
std::optional<PixelRect> nonBlackBox(const Pixels& pixels, const PixelRect& in);

// The height of a uniform, bright title bar at the top of a window's picture; 0 when there is none.
int chromeTop(const Pixels& pixels);

}  // namespace tandrel
