#pragma once

#include <vector>

#include "reading/ink.h"

namespace tandrel {

// The rows of text in what was joined into one line: several where something between them, such as
// a stroke of the picture behind, touches both. The line itself everywhere else.
std::vector<Ink> rowsOf(const GrayFrame& frame, const Ink& line);

}  // namespace tandrel
