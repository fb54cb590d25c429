#pragma once

#include <array>
#include <string_view>

#include "base/pixel_buffer.h"

namespace tandrel::bench {

inline constexpr int kFrameWidth = 1206;
inline constexpr int kFrameHeight = 2622;

// The three phone screens that everything about pictures is measured with: the same on every run.
inline constexpr std::array<std::string_view, 3> kFrameNames{"text", "photo", "dark"};

// The frame of that name: an interface of text, one with a noisy photo, a dark one.
const PixelBuffer& frame(std::size_t index);

}  // namespace tandrel::bench
