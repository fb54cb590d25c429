#include "base/paths.h"

#include <pwd.h>
#include <unistd.h>

#include "base/environment.h"

namespace tandrel {
namespace {

std::filesystem::path folder(const char* variable, const char* belowHome) {
    const std::filesystem::path set = environment(variable).value_or("");
    return set.is_absolute() ? set : homeFolder() / belowHome;
}

}  // namespace

std::filesystem::path homeFolder() {
    std::filesystem::path set = environment("HOME").value_or("");
    if (set.is_absolute()) return set;
    if (const passwd* entry = getpwuid(getuid()); entry != nullptr && entry->pw_dir != nullptr) {
        return entry->pw_dir;
    }
    return "/tmp";
}

std::filesystem::path configHome() { return folder("XDG_CONFIG_HOME", ".config"); }
std::filesystem::path dataHome() { return folder("XDG_DATA_HOME", ".local/share"); }
std::filesystem::path stateHome() { return folder("XDG_STATE_HOME", ".local/state"); }

std::filesystem::path executablePath() {
    std::error_code error;
    return std::filesystem::read_symlink("/proc/self/exe", error);
}

}  // namespace tandrel
