#pragma once

#include <string>
#include <string_view>

namespace tandrel {

// The text on one line, safe for a terminal: control characters, line separators and marks that
// change the direction of text become spaces, since what a phone shows may not move the cursor or
// turn an amount around.
std::string printable(std::string_view text);

}  // namespace tandrel
