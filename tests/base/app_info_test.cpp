#include "base/app_info.h"

#include <fstream>

#include <gtest/gtest.h>

#include "base/paths.h"
#include "support/environment_variable.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

AppInfo infoFrom(const std::string& json) {
    const TemporaryFolder bundle;
    std::filesystem::create_directories(bundle.path() / "share/tandrel");
    std::ofstream(bundle.path() / "share/tandrel/info.json") << json;
    return AppInfo::load(bundle.path());
}

TEST(AppInfo, TheVersionIsTheFirstThatIsText) {
    const std::pair<const char*, const char*> rows[] = {
        {R"({"TandrelVersion": "1.2", "CFBundleShortVersionString": "9"})", "1.2"},
        {R"({"TandrelVersion": 1.2, "CFBundleShortVersionString": "9"})", "9"},
        {R"({"TandrelVersion": null})", "dev"},
        {"[]", "dev"},
        {"not JSON", "dev"},
        {"", "dev"},
    };
    for (const auto& [json, version] : rows) EXPECT_EQ(infoFrom(json).version, version) << json;
    EXPECT_EQ(AppInfo::load("/nonexistent").version, "dev");
}

TEST(AppInfo, NamesHaveDefaults) {
    const AppInfo info = infoFrom(R"({"PocketLinkBluetoothName": "Keys"})");
    EXPECT_EQ(info.bluetoothName, "Keys");
    EXPECT_EQ(info.supportFolderName, "PocketLink");
}

TEST(AppInfo, WhereItRunsFrom) {
    const EnvironmentVariable home("HOME", "/home/ann");
    const std::tuple<const char*, const char*, bool> rows[] = {
        {"/Volumes/Tandrel/Tandrel", "the disk image", false},
        {"/media/ann/Tandrel", "the disk image", false},
        {"/Volumes/x/AppTranslocation/Downloads/Tandrel", "the disk image", false},
        {"/tmp/AppTranslocation/Downloads/Tandrel", "a temporary copy macOS made", false},
        {"/home/ann/Downloads/Tandrel", "your Downloads folder", false},
        {"/home/ann/Downloads", "your Downloads folder", false},
        {"/home/ann/MyDownloads/Tandrel", "Tandrel", false},
        {"/VolumesX/Tandrel", "Tandrel", false},
        {"/opt/Tandrel", "Tandrel", true},
        {"/optional/Tandrel", "Tandrel", false},
        {"/usr/local/lib/tandrel", "tandrel", true},
        {"/home/ann/.local/opt/Tandrel", "Tandrel", true},
        {"/home/ann/.local/lib/tandrel", "tandrel", true},
        {"/home/annette/.local/opt/Tandrel", "Tandrel", false},
    };
    for (const auto& [bundle, location, inApplications] : rows) {
        AppInfo info;
        info.bundle = bundle;
        EXPECT_EQ(info.locationName(), location) << bundle;
        EXPECT_EQ(info.isInApplications(), inApplications) << bundle;
    }
}

TEST(AppInfo, TheHelperLiesInTheBundleThatIsShown) {
    AppInfo info;
    info.bundle = "/opt/Tandrel";
    EXPECT_EQ(info.cliPath(), "/opt/Tandrel/bin/tandrel");
    info.bundleOverride = "/shown";
    EXPECT_EQ(info.cliPath(), "/shown/bin/tandrel");
}

TEST(Paths, VariablesCountOnlyWhenAbsolute) {
    const EnvironmentVariable home("HOME", "/home/ann");
    const EnvironmentVariable config("XDG_CONFIG_HOME", "/elsewhere");
    const EnvironmentVariable data("XDG_DATA_HOME", "relative");
    const EnvironmentVariable state("XDG_STATE_HOME", "");
    EXPECT_EQ(configHome(), "/elsewhere");
    EXPECT_EQ(dataHome(), "/home/ann/.local/share");
    EXPECT_EQ(stateHome(), "/home/ann/.local/state");
    const EnvironmentVariable unset("XDG_CONFIG_HOME", std::nullopt);
    EXPECT_EQ(configHome(), "/home/ann/.config");
    for (const std::optional<std::string>& odd :
         {std::optional<std::string>(), {""}, {"relative"}}) {
        const EnvironmentVariable oddHome("HOME", odd);
        EXPECT_TRUE(homeFolder().is_absolute());
    }
}

}  // namespace
}  // namespace tandrel
