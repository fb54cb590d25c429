#pragma once

#include <filesystem>
#include <string>

namespace tandrel {

// Facts about the installed application. The application is an app directory: bin/ with the
// programs and share/tandrel/info.json beside it.
struct AppInfo {
    std::string version = "dev";
    std::string bluetoothName = "PocketLink";
    std::string supportFolderName = "PocketLink";
    std::filesystem::path bundle;          // the app directory
    std::filesystem::path bundleOverride;  // shown instead of `bundle` in `cliPath` when not empty

    // Reads share/tandrel/info.json of the app directory; what the file lacks keeps its default.
    static AppInfo load(const std::filesystem::path& bundle);
    static AppInfo ofThisProgram() { return load(bundleOfThisProgram()); }
    // The app directory that this executable lies in.
    static std::filesystem::path bundleOfThisProgram();

    // The companion helper that AI apps are told to run.
    std::filesystem::path cliPath() const;
    bool isInApplications() const;
    // Where the application runs from, for the installer's wording.
    std::string locationName() const;
    // This computer's name for the owner, or "this Mac" when it has none.
    static std::string macName();
};

}  // namespace tandrel
