#pragma once

#include <ranges>
#include <string>
#include <string_view>
#include <vector>

namespace tandrel {

// "Total €5 / Confirm": the texts of a screen, or of a list, as a table's row writes them.
inline std::vector<std::string> parts(std::string_view written) {
    std::vector<std::string> result;
    for (const auto part : written | std::views::split(std::string_view(" / "))) {
        result.emplace_back(part.begin(), part.end());
    }
    return result;
}

}  // namespace tandrel
