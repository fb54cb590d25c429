#include "aiconnect/programs.h"

#include <algorithm>

#include "base/file.h"

namespace tandrel {

std::optional<std::filesystem::path> firstExecutable(
    const std::vector<std::filesystem::path>& paths) {
    const auto found = std::ranges::find_if(paths, isExecutableFile);
    return found == paths.end() ? std::nullopt : std::optional(*found);
}

}  // namespace tandrel
