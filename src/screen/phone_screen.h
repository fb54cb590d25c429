#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/pixel_buffer.h"

namespace tandrel {

enum class PhoneScreen { unknown, off, locked, awake };

// CONTRACT SKETCH: the screen room fills this in.
std::string_view name(PhoneScreen screen);
// Mean brightness of the frame, 0 to 1.
std::optional<double> meanLuma(const PixelBuffer& frame);
PhoneScreen classify(const std::vector<std::string>& lines, std::optional<double> meanLuma);

}  // namespace tandrel
