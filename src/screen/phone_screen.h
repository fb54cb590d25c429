#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/pixel_buffer.h"

namespace tandrel {

enum class PhoneScreen { unknown, off, locked, awake };

// The state's word, as the API gives it.
std::string_view name(PhoneScreen screen);

// Mean brightness of the frame, 0 to 1. None for no frame.
std::optional<double> meanLuma(const PixelBuffer& frame);

// What state the phone is in, told from the texts on its screen in reading order and from the
// frame's mean brightness, where that is known.
PhoneScreen classify(const std::vector<std::string>& lines, std::optional<double> meanLuma);

}  // namespace tandrel
