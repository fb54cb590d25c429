#include <gmock/gmock.h>

#include "aiconnect/ai_connect_fixture.h"
#include "platform/linux/as_nobody.h"

namespace tandrel {
namespace {

using testing::ElementsAre;
namespace fs = std::filesystem;

class CodexTest : public AIConnectTest {};

constexpr const char* kAdded =
    "Added (previous settings saved as config.toml.backup-2025-12-18T00-00-00Z). Start a new Codex "
    "session to use it.";
constexpr const char* kAddedFirst = "Added. Start a new Codex session to use it.";

TEST_F(CodexTest, AMissingFileIsCreatedHoldingOnlyTheEntry) {
    EXPECT_EQ(connect().codexLink(), Link::notAdded);
    EXPECT_EQ(connect().addToCodex(), (Outcome{true, kAddedFirst}));
    EXPECT_EQ(textOf(codexFile()), kEntry);
    EXPECT_EQ(connect().codexLink(), Link::addedHere);
    EXPECT_THAT(namesIn(codexFile().parent_path()), ElementsAre("config.toml"));
}

TEST_F(CodexTest, AnOldEntryIsUpdatedAndTheFileBackedUpBeside) {
    const std::string old = "model = \"o4\"\n[mcp_servers.tandrel]\ncommand = \"/old\"\n";
    put(codexFile(), old);
    fs::permissions(codexFile(), fs::perms(0640));
    EXPECT_EQ(connect().codexLink(), Link::addedElsewhere);
    EXPECT_EQ(connect().addToCodex(), (Outcome{true, kAdded}));
    EXPECT_EQ(textOf(codexFile()), std::string("model = \"o4\"\n\n") + kEntry);
    EXPECT_EQ(fs::status(codexFile()).permissions(), fs::perms(0640));
    EXPECT_EQ(textOf(backupOf(codexFile())), old);

    // A second edit in the same second keeps the first one's backup.
    EXPECT_TRUE(connect().addToCodex().ok);
    EXPECT_THAT(namesIn(codexFile().parent_path()),
                ElementsAre("config.toml", "config.toml.backup-2025-12-18T00-00-00Z",
                            "config.toml.backup-2025-12-18T00-00-00Z-2"));
    EXPECT_EQ(textOf(backupOf(codexFile())), old);
}

TEST_F(CodexTest, AFormThatCannotBeEditedIsLeftAndTheOwnerToldWhatToPaste) {
    put(codexFile(), "mcp_servers = {}\n");
    EXPECT_EQ(
        connect().addToCodex(),
        (Outcome{false,
                 "Codex's settings file lists its tools in a way Tandrel can't safely edit. Copy "
                 "the setup below and paste it at the end of " +
                     codexFile().string()}));
    EXPECT_EQ(textOf(codexFile()), "mcp_servers = {}\n");
    EXPECT_EQ(connect().codexSnippet() + "\n", kEntry);
    EXPECT_THAT(namesIn(codexFile().parent_path()), ElementsAre("config.toml"));
}

TEST_F(CodexTest, LinksAreFollowed) {
    put(home() / "dotfiles/codex.toml", "a = 1\n");
    fs::create_directories(codexFile().parent_path());
    fs::create_symlink("../dotfiles/codex.toml", codexFile());
    EXPECT_EQ(connect().addToCodex().message, kAdded);
    EXPECT_TRUE(fs::is_symlink(codexFile()));
    EXPECT_EQ(textOf(home() / "dotfiles/codex.toml"), std::string("a = 1\n\n") + kEntry);
    EXPECT_THAT(namesIn(home() / "dotfiles"), ElementsAre("codex.toml"));
    EXPECT_TRUE(fs::exists(backupOf(codexFile())));
}

TEST_F(CodexTest, WhatCannotBeReadOrWrittenSaysWhyAndIsLeft) {
    const auto putWith = [&](int fileMode, int folderMode) {
        put(codexFile(), "a = 1\n");
        fs::permissions(codexFile(), fs::perms(fileMode));
        fs::permissions(codexFile().parent_path(), fs::perms(folderMode));
    };
    const std::pair<std::function<void()>, std::string> rows[] = {
        {[&] { fs::create_directories(codexFile() / "x"); },
         "Couldn't back up Codex's settings: can't read " + codexFile().string() +
             ": it is a folder"},
        {[&] { put(codexFile(), std::string(1024 * 1024 + 1, '#')); },
         "Couldn't back up Codex's settings: can't read " + codexFile().string() +
             ": it is larger"},
        {[&] { put(home() / ".codex", "a file where the folder should be"); },
         "Couldn't back up Codex's settings: can't read "},
        {[&] { putWith(0444, 0777); }, "Couldn't write Codex's settings: Permission denied"},
        {[&] { putWith(0666, 0555); }, "Couldn't back up Codex's settings: can't write beside "},
        {[&] { fs::permissions(home(), fs::perms(0555)); },
         "Couldn't write Codex's settings: can't create "},
    };
    for (const auto& [prepare, beginning] : rows) {
        prepare();
        fs::permissions(home(), fs::perms::group_exec | fs::perms::others_exec,
                        fs::perm_options::add);
        Outcome outcome;
        {
            const AsNobody nobody;
            outcome = connect().addToCodex();
        }
        EXPECT_FALSE(outcome.ok) << beginning;
        EXPECT_THAT(outcome.message, testing::StartsWith(beginning));
        if (fs::is_regular_file(codexFile())) {
            EXPECT_EQ(textOf(codexFile()).find("tandrel"), std::string::npos) << beginning;
            EXPECT_THAT(namesIn(codexFile().parent_path()), ElementsAre("config.toml"));
        }
        fs::permissions(home(), fs::perms::owner_all);
        fs::remove_all(home() / ".codex");
    }
}

TEST_F(CodexTest, IsFoundByItsProgramOrAsAnApplication) {
    EXPECT_FALSE(connect().codexInstalled());
    put(home() / ".local/bin/codex", "not executable");
    EXPECT_FALSE(connect().codexInstalled());
    desktop.installed = "com.openai.codex";
    EXPECT_TRUE(connect().codexInstalled());
    desktop.installed.clear();
    putProgram(".npm-global/bin/codex", "");
    EXPECT_TRUE(connect().codexInstalled());
}

}  // namespace
}  // namespace tandrel
