#pragma once

#include <string_view>

#include "reading/strip.h"

namespace tandrel {

// Whether the ink contradicts a text with figures: points and commas, which a network loses easily,
// stand on the strip as small marks of their own at the foot of the line and can be counted.
bool contradictsInk(const Strip& strip, std::string_view text);

}  // namespace tandrel
