#pragma once

#include <string>
#include <string_view>

namespace tandrel {

// A character as a string literal shows it: in double quotes, with \n, \t, \r, \0, \" and \\, and
// other control characters as \u{1B}. Never longer than a line: what follows kLongestDebugForm
// bytes is left out, since a single user-perceived character may hold any number of combining
// marks.
std::string debugForm(std::string_view character);

inline constexpr std::size_t kLongestDebugForm = 64;

}  // namespace tandrel
