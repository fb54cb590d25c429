#include "app/installer.h"

#include <gmock/gmock.h>

#include "app/autostart.h"
#include "base/file.h"
#include "platform/linux/desktop_applications.h"
#include "platform/recorded_starts.h"
#include "support/manual_clock.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

using testing::StartsWith;
namespace fs = std::filesystem;

class InstallerTest : public testing::Test {
 protected:
    InstallerTest() {
        put(bundle() / "bin/tandrel-app", "new app");
        put(bundle() / "bin/tandrel", "new helper");
        fs::permissions(bundle() / "bin/tandrel", fs::perms(0755));
        put(bundle() / "share/tandrel/info.json", "{}");
        put(bundle() / "share/icons/hicolor/scalable/apps/tandrel.svg", "<svg/>");
        put(bundle() / "CMakeCache.txt", "much that is no part of the application");
    }
    static void put(const fs::path& file, const std::string& text) {
        EXPECT_TRUE(replaceFile(file, text));
    }
    static std::string textOf(const fs::path& file) {
        return readFile(file, 100'000).value_or("none");
    }
    fs::path bundle() const { return folder_.path() / "Downloads/Tandrel it's"; }
    fs::path data() const { return folder_.path() / "data"; }
    fs::path installed() const { return folder_.path() / "opt/Tandrel"; }
    Installer installer() {
        AppInfo info;
        info.bundle = bundle();
        return {info, {folder_.path() / "opt", data()}, processes_, clock_};
    }

    TemporaryFolder folder_;
    RecordedStarts processes_;
    ManualClock clock_;
};

TEST_F(InstallerTest, CopiesTheApplicationAloneAndStartsIt) {
    EXPECT_EQ(installer().moveToApplications(), std::nullopt);
    EXPECT_EQ(textOf(installed() / "bin/tandrel-app"), "new app");
    EXPECT_EQ(fs::status(installed() / "bin/tandrel").permissions(), fs::perms(0755));
    EXPECT_EQ(textOf(installed() / "share/tandrel/info.json"), "{}");
    EXPECT_FALSE(fs::exists(installed() / "CMakeCache.txt"));
    EXPECT_EQ(textOf(data() / "icons/hicolor/scalable/apps/tandrel.svg"), "<svg/>");
    const auto command = desktopCommand(textOf(data() / "applications/tandrel.desktop")).value();
    EXPECT_THAT(command, testing::ElementsAre(installed() / "bin/tandrel-app"));
    EXPECT_THAT(processes_.started, testing::ElementsAre(installed() / "bin/tandrel-app"));
    EXPECT_FALSE(fs::exists(data() / "Trash"));
}

TEST_F(InstallerTest, AnOldCopyGoesToTheTrashAndEachKeepsItsPlace) {
    for (const char* old : {"old", "older"}) {
        put(installed() / "bin/tandrel-app", old);
        EXPECT_EQ(installer().moveToApplications(), std::nullopt);
        EXPECT_EQ(textOf(installed() / "bin/tandrel-app"), "new app");
    }
    const fs::path trash = data() / "Trash";
    EXPECT_EQ(textOf(trash / "files/Tandrel/bin/tandrel-app"), "old");
    EXPECT_EQ(textOf(trash / "files/Tandrel.2/bin/tandrel-app"), "older");
    EXPECT_THAT(textOf(trash / "info/Tandrel.2.trashinfo"),
                StartsWith("[Trash Info]\nPath=" + installed().string() + "\nDeletionDate=20"));
}

TEST_F(InstallerTest, AFailureLeavesBothCopiesAndSaysWhatToDo) {
    put(installed() / "bin/tandrel-app", "old");
    fs::remove(bundle() / "bin/tandrel");
    EXPECT_EQ(installer().moveToApplications(),
              "Couldn't copy to Applications (No such file or directory). Drag Tandrel into "
              "Applications in Finder instead.");
    EXPECT_EQ(textOf(installed() / "bin/tandrel-app"), "old");
    EXPECT_EQ(textOf(bundle() / "bin/tandrel-app"), "new app");
    EXPECT_TRUE(processes_.started.empty());
    EXPECT_EQ(std::distance(fs::directory_iterator(folder_.path() / "opt"), {}), 1)
        << "a part of a copy stays";
}

TEST_F(InstallerTest, TheCopyThatLiesThereAlreadyIsLeft) {
    fs::create_directories(installed().parent_path());
    fs::create_directory_symlink(bundle(), installed());
    EXPECT_EQ(installer().moveToApplications(), std::nullopt);
    EXPECT_TRUE(fs::is_symlink(installed()));
    EXPECT_TRUE(processes_.started.empty());
}

TEST(Installer, KnowsThePlacesWhereACopyMayNotStay) {
    for (const char* passing :
         {"/tmp/.mount_x/Tandrel", "/run/media/hana/STICK/Tandrel", "/home/hana/Downloads/Tandrel",
          "/home/hana/Downloads", "/home/hana/src/../Downloads/x"}) {
        EXPECT_TRUE(Installer::isInPassing(passing, "/home/hana")) << passing;
    }
    for (const char* staying :
         {"/home/hana/.local/opt/Tandrel", "/home/hana/Downloads2/Tandrel",
          "/home/ben/Downloads/Tandrel", "/usr/local/lib/tandrel", "/tmpfs/Tandrel", ""}) {
        EXPECT_FALSE(Installer::isInPassing(staying, "/home/hana")) << staying;
    }
}

TEST_F(InstallerTest, RelaunchesAfterADelayThroughAShell) {
    ASSERT_TRUE(installer().relaunch(2));
    EXPECT_THAT(processes_.started, testing::ElementsAre("/bin/sh", "-c", "sleep 2; exec \"$0\"",
                                                         bundle() / "bin/tandrel-app"));
}

TEST_F(InstallerTest, AutostartIsOffUntilTurnedOnAndObeysTheDesktopsSwitch) {
    const fs::path entry = folder_.path() / "config/autostart/tandrel.desktop";
    const Autostart autostart(bundle(), folder_.path() / "config");
    EXPECT_FALSE(autostart.isOn());
    ASSERT_TRUE(autostart.turnOff()) << "what is off may be turned off";
    ASSERT_TRUE(autostart.turnOn());
    EXPECT_TRUE(autostart.isOn());
    EXPECT_FALSE(Autostart(installed(), folder_.path() / "config").isOn()) << "another copy's";
    const std::string text = textOf(entry);
    for (const char* line : {"Hidden=true", "X-GNOME-Autostart-enabled=false"}) {
        put(entry, text + line + "\n");
        EXPECT_FALSE(autostart.isOn()) << line;
    }
    ASSERT_TRUE(autostart.turnOff());
    EXPECT_FALSE(fs::exists(entry));
}

}  // namespace
}  // namespace tandrel
