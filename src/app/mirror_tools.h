#pragma once

#include <optional>

#include "app/modes.h"

namespace tandrel {

// Runs a picture tool with this computer's services; nothing when the word is none, and the
// application starts instead.
std::optional<int> runMirrorTool(const Arguments& arguments);

}  // namespace tandrel
