#include "aiconnect/programs.h"

#include <algorithm>

#include <unistd.h>

namespace tandrel {

bool isExecutableFile(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

std::optional<std::filesystem::path> firstExecutable(
    const std::vector<std::filesystem::path>& paths) {
    const auto found = std::ranges::find_if(paths, isExecutableFile);
    return found == paths.end() ? std::nullopt : std::optional(*found);
}

}  // namespace tandrel
