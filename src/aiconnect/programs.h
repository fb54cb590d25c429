#pragma once

#include <filesystem>
#include <optional>
#include <vector>

namespace tandrel {

// The first of the paths at which an executable file lies.
std::optional<std::filesystem::path> firstExecutable(
    const std::vector<std::filesystem::path>& paths);

}  // namespace tandrel
