#include "platform/linux/desktop_applications.h"

#include <fstream>

#include <gtest/gtest.h>

#include "platform/recorded_starts.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

using Words = std::optional<std::vector<std::string>>;

TEST(DesktopCommand, IsReadAsTheEntrysRulesSay) {
    const std::string head = "[Desktop Entry]\nName=X\nTryExec=no\nExec";
    const std::pair<std::string, Words> rows[] = {
        {head + "=/usr/bin/claude-desktop %U\n", Words{{"/usr/bin/claude-desktop"}}},
        {head + " = app --a  b\r\n", Words{{"app", "--a", "b"}}},
        {head + R"(="/opt/My App/x" "a\\"b" "" 100%% --u=%u)",
         Words{{"/opt/My App/x", "a\"b", "", "100%", "--u="}}},
        {head + R"(=app\sx)", Words{{"app", "x"}}},
        {"[Other]\nExec=x\n[Desktop Entry]\nExec=y\n[Desktop Action z]\nExec=z", Words{{"y"}}},
        {"[Desktop Entry]\nName=x\n[Desktop Action z]\nExec=z", std::nullopt},
        {head + "=\"open", std::nullopt},
        {head + "=", std::nullopt},
        {head + "=%", std::nullopt},
        {head + R"(="a\)", std::nullopt},
        {head + "=\"\" x", std::nullopt},
        {"Exec=x", std::nullopt},
        {"", std::nullopt},
    };
    for (const auto& [entry, words] : rows) EXPECT_EQ(desktopCommand(entry), words) << entry;
}

TEST(DesktopApplications, AreFoundByTheirEntryInTheFirstFolderAndStarted) {
    const TemporaryFolder folder;
    RecordedStarts processes;
    DesktopApplications applications(processes, {folder.path() / "own", folder.path() / "all"});
    EXPECT_FALSE(applications.find("com.anthropic.claudefordesktop"));
    for (const char* name : {"all", "own"}) {
        std::filesystem::create_directories(folder.path() / name / "applications");
        const auto entry = folder.path() / name / "applications/claude-desktop.desktop";
        std::ofstream(entry) << "[Desktop Entry]\nExec=" << name << " --x %U\n";
        const auto found = applications.find("com.anthropic.claudefordesktop").value();
        EXPECT_EQ(found.location, entry);
        EXPECT_TRUE(applications.open(found));
        EXPECT_EQ(processes.started, (std::vector<std::string>{name, "--x"}));
    }
    EXPECT_FALSE(applications.find("com.openai.codex"));
    EXPECT_FALSE(applications.find(""));
    EXPECT_FALSE(applications.open({folder.path() / "none.desktop"}));
}

}  // namespace
}  // namespace tandrel
