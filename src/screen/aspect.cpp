#include "screen/aspect.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

namespace tandrel {
namespace {

std::optional<double> number(std::string_view text) {
    if (text.starts_with('+')) text.remove_prefix(1);
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size()) return std::nullopt;
    return value;
}

// What lies between the slashes, without empty parts.
std::vector<std::string_view> partsOf(std::string_view text) {
    std::vector<std::string_view> parts;
    while (!text.empty()) {
        const std::size_t length = std::min(text.find('/'), text.size());
        if (length > 0) parts.push_back(text.substr(0, length));
        text.remove_prefix(std::min(length + 1, text.size()));
    }
    return parts;
}

}  // namespace

std::optional<double> parseAspect(std::optional<std::string_view> text) {
    std::vector<double> sides;
    for (const std::string_view part : partsOf(text.value_or(""))) {
        const auto side = number(part);
        if (!side || !(*side > 0) || std::isinf(*side)) return std::nullopt;  // NaN is not above 0
        sides.push_back(*side);
    }
    if (sides.size() == 1) sides.push_back(1);
    if (sides.size() != 2) return std::nullopt;
    const double ratio = std::min(sides[0], sides[1]) / std::max(sides[0], sides[1]);
    return ratio > 0 ? std::optional(ratio) : std::nullopt;
}

}  // namespace tandrel
