#pragma once

#include <vector>

#include "reading/ink.h"

namespace tandrel {

// The line without the icons at its ends, told by their shape: standing apart, they rise above and
// below the letters or float between baseline and top. Parts of the line that a gap too wide for a
// space divides come apart.
std::vector<Ink> withoutIcons(const GrayFrame& frame, const Ink& line);

}  // namespace tandrel
