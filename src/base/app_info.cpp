#include "base/app_info.h"

#include <unistd.h>

#include "base/file.h"
#include "base/json.h"
#include "base/paths.h"

namespace tandrel {
namespace {

constexpr std::size_t kLargestInfoFile = 64 * 1024;

bool isBelow(const std::string& path, std::string folder) {
    if (folder.empty() || folder.back() != '/') folder += '/';
    return path.starts_with(folder);
}

}  // namespace

AppInfo AppInfo::load(const std::filesystem::path& bundle) {
    AppInfo info;
    info.bundle = bundle;
    const auto text = readFile(bundle / "share/tandrel/info.json", kLargestInfoFile);
    if (!text) return info;
    const auto json = parseJson(*text);
    if (!json) return info;
    const auto take = [&](const char* key, std::string& field) {
        if (auto value = textMember(*json, key)) field = std::move(*value);
    };
    take("CFBundleShortVersionString", info.version);
    take("TandrelVersion", info.version);
    take("PocketLinkBluetoothName", info.bluetoothName);
    take("PocketLinkSupportFolder", info.supportFolderName);
    return info;
}

std::filesystem::path AppInfo::bundleOfThisProgram() {
    return executablePath().parent_path().parent_path();
}

std::filesystem::path AppInfo::cliPath() const {
    return (bundleOverride.empty() ? bundle : bundleOverride) / "bin/tandrel";
}

bool AppInfo::isInApplications() const {
    const std::string path = bundle.string() + "/";
    const std::filesystem::path local = homeFolder() / ".local";
    return isBelow(path, "/opt") || isBelow(path, "/usr") || isBelow(path, local / "opt") ||
           isBelow(path, local / "lib");
}

std::string AppInfo::locationName() const {
    const std::string path = bundle.string() + "/";
    const auto contains = [&](const char* part) { return path.find(part) != std::string::npos; };
    if (isBelow(path, "/Volumes") || isBelow(path, "/media") || isBelow(path, "/run/media")) {
        return "the disk image";
    }
    if (contains("/AppTranslocation/")) return "a temporary copy macOS made";
    if (contains("/Downloads/")) return "your Downloads folder";
    return bundle.filename().string();
}

std::string AppInfo::macName() {
    char name[256] = {};
    if (::gethostname(name, sizeof name - 1) != 0 || name[0] == '\0') return "this Mac";
    return name;
}

}  // namespace tandrel
