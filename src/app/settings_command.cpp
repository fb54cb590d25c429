#include "app/settings_command.h"

#include <fmt/format.h>

#include "platform/linux/chosen_languages.h"
#include "platform/linux/json_user_defaults.h"

namespace tandrel {
namespace {

constexpr const char* kSettingsUsage =
    "usage: tandrel-app --set paused true|false\n"
    "       tandrel-app --set link cable|airplay\n"
    "       tandrel-app --set grabber NAME|PATH|none\n"
    "       tandrel-app --set languages LANGUAGES\n";

Result<void> change(UserDefaults& defaults, const std::string& key, const std::string& value) {
    if (key == "paused" && (value == "true" || value == "false")) {
        return defaults.set(key, value == "true");
    }
    if (key == "languages") {
        TRY_VOID(checkLanguages(value));
        return defaults.set(key, value);
    }
    if (key == "grabber") return defaults.set(key, value == "none" ? std::string() : value);
    if (key == "link" && (value == "cable" || value == "airplay")) return defaults.set(key, value);
    return fail(kSettingsUsage, 2);
}

}  // namespace

int setSetting(const Arguments& arguments, const AppFiles& files) {
    if (arguments.size() != 3) {
        fmt::print(stderr, "{}", kSettingsUsage);
        return 2;
    }
    JsonUserDefaults defaults(files.settings);
    const auto changed = change(defaults, arguments[1], arguments[2]);
    if (changed) {
        fmt::print("{} = {}\n", arguments[1], arguments[2]);
        return 0;
    }
    if (changed.error().status == 2) {
        fmt::print(stderr, "{}", kSettingsUsage);
        return 2;
    }
    fmt::print(stderr, "{}\n", changed.error().message);
    return 1;
}

}  // namespace tandrel
