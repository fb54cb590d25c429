#pragma once

#include <array>
#include <optional>
#include <string_view>

namespace tandrel {

// Phone screen shapes, short side / long side.
inline constexpr std::array IPHONE_ASPECTS{1206.0 / 2622, 1179.0 / 2556, 750.0 / 1334};

// The short / long ratio, in (0, 1], of a shape that a person wrote as one number or as two
// separated by "/", in either order; none for anything else.
std::optional<double> parseAspect(std::optional<std::string_view> text);

}  // namespace tandrel
