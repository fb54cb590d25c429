#include "screen/window_sources.h"

#include <algorithm>
#include <optional>

namespace tandrel {

Result<std::vector<WinInfo>> WindowSources::all() {
    std::vector<WinInfo> windows;
    std::optional<Error> error;
    for (Windows* source : sources_) {
        auto found = source->all();
        if (!found && !error) error = found.error();
        if (found) windows.insert(windows.end(), found->begin(), found->end());
    }
    if (windows.empty() && error) return std::unexpected(*error);
    return windows;
}

Result<std::unique_ptr<WindowStream>> WindowSources::open(std::uint32_t id, WindowEvents events) {
    for (Windows* source : sources_) {
        const auto found = source->all();
        if (found && std::ranges::count(*found, id, &WinInfo::id) > 0) {
            return source->open(id, std::move(events));
        }
    }
    return std::unexpected(windowIsGone(id));
}

}  // namespace tandrel
