#pragma once

#include <array>
#include <cstdint>

#include "image/pixels.h"

namespace tandrel {

inline constexpr int kWindowThumbnailWidth = 96;
inline constexpr int kWindowThumbnailHeight = 192;

// Grey bytes, row by row.
using WindowThumbnail = std::array<std::uint8_t, kWindowThumbnailWidth * kWindowThumbnailHeight>;

// The luma of the pixel at the centre of each cell, sampled without interpolation: cheap enough for
// every frame, and made for telling whether two frames differ. The picture is not empty.
WindowThumbnail windowThumbnail(const Pixels& pixels);

// Whether at least two cells differ by more than 18 grey levels. One alone is noise or a caret.
bool differ(const WindowThumbnail& a, const WindowThumbnail& b);

}  // namespace tandrel
