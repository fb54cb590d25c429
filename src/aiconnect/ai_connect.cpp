#include "aiconnect/ai_connect.h"

#include <pwd.h>
#include <unistd.h>

#include "aiconnect/programs.h"
#include "base/environment.h"
#include "base/paths.h"

namespace tandrel {
namespace {

std::filesystem::path absoluteOr(const char* variable, const std::filesystem::path& otherwise) {
    const std::filesystem::path set = environment(variable).value_or("");
    return set.is_absolute() ? set : otherwise;
}

std::string shellOfThisUser() {
    if (const auto set = environment("SHELL"); set && set->starts_with('/')) return *set;
    const passwd* entry = ::getpwuid(::getuid());
    const std::string shell = entry != nullptr ? entry->pw_shell : "";
    return shell.empty() ? "/bin/sh" : shell;
}

}  // namespace

AIConnectPlaces AIConnectPlaces::below(const std::filesystem::path& home) {
    return {.home = home,
            .codexHome = home / ".codex",
            .claudeConfig = home,
            .configHome = home / ".config",
            .loginShell = "/bin/sh",
            .system = {"/home/linuxbrew/.linuxbrew/bin", "/usr/local/bin", "/usr/bin"},
            .searchPath = "/usr/local/bin:/usr/bin:/bin"};
}

AIConnectPlaces AIConnectPlaces::fromEnvironment() {
    AIConnectPlaces places = below(homeFolder());
    places.codexHome = absoluteOr("CODEX_HOME", places.codexHome);
    places.claudeConfig = absoluteOr("CLAUDE_CONFIG_DIR", places.claudeConfig);
    places.configHome = tandrel::configHome();
    places.loginShell = shellOfThisUser();
    places.searchPath = environment("PATH").value_or(places.searchPath);
    return places;
}

AIConnect::AIConnect(const std::filesystem::path& helper, AIConnectPlaces places, Services services)
    : helper_(helper.string()), places_(std::move(places)), to_(std::move(services)) {}

}  // namespace tandrel
