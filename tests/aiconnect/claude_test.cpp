#include <gmock/gmock.h>

#include "aiconnect/ai_connect_fixture.h"
#include "base/json.h"

namespace tandrel {
namespace {

namespace fs = std::filesystem;

class ClaudeCodeTest : public AIConnectTest {};

TEST_F(ClaudeCodeTest, IsLookedForInItsPlacesInOrder) {
    places.system = {home() / "usr/bin"};
    for (const char* name : {".bun/bin/claude", ".npm-global/bin/claude", "usr/bin/claude",
                             ".local/bin/claude", ".claude/local/claude"}) {
        const auto program = putProgram(name, "");
        EXPECT_EQ(connect().findClaude(), program);
    }
    fs::permissions(home() / ".claude/local/claude", fs::perms::owner_read);
    EXPECT_EQ(connect().findClaude(), home() / ".local/bin/claude");
}

TEST_F(ClaudeCodeTest, IsAskedOfTheLoginShellLast) {
    const auto claude = putProgram("node/bin/claude", "");
    const std::pair<std::string, std::optional<fs::path>> rows[] = {
        {"[ \"$1\" = -lc ] && [ \"$2\" = 'command -v claude' ] && echo " + claude.string(), claude},
        {"echo Welcome /home; echo '  " + claude.string() + "  '; echo bye >&2", claude},
        {"echo " + claude.string() + "; exit 1", std::nullopt},
        {"echo \"alias claude='/x/claude'\"", std::nullopt},
        {"echo /nowhere/claude", std::nullopt},
    };
    for (const auto& [script, answer] : rows) {
        places.loginShell = putProgram("shell", script);
        EXPECT_EQ(connect().findClaude(), answer) << script;
    }
    places.loginShell = "/nowhere/sh";
    EXPECT_EQ(connect().findClaude(), std::nullopt);
}

TEST_F(ClaudeCodeTest, ItsCommandQuotesThePathWhereAShellWouldReadMore) {
    EXPECT_EQ(connect().claudeCodeCommand(),
              "claude mcp add -s user tandrel -- /opt/Tandrel/bin/tandrel mcp");
    for (const auto& [text, quoted] :
         {std::pair("/a-b_c.9/D", "/a-b_c.9/D"), std::pair("/a b", "'/a b'"),
          std::pair("it's $HOME", R"('it'\''s $HOME')"), std::pair("", "''"),
          std::pair("\xC3\xA9", "'\xC3\xA9'")}) {
        EXPECT_EQ(shellQuote(text), quoted);
    }
    const std::string hard = "a'b\"c$(d)\\ \n*";
    const auto end =
        processes.run({.program = "/bin/sh", .arguments = {"-c", "printf %s " + shellQuote(hard)}});
    ASSERT_TRUE(end);
    EXPECT_EQ(end->output, hard);
}

TEST_F(ClaudeCodeTest, IsToldByItsOwnCommand) {
    const auto claude = putProgram("claude", "printf '%s\\n' \"$@\" > \"$(dirname \"$0\")/words\"");
    EXPECT_EQ(
        connect().addToClaudeCode(claude),
        (Outcome{true,
                 "Added. Start a new Claude Code session and ask it to look at your iPhone."}));
    EXPECT_EQ(textOf(home() / "words"),
              "mcp\nadd\n-s\nuser\ntandrel\n--\n/opt/Tandrel/bin/tandrel\nmcp\n");
}

TEST_F(ClaudeCodeTest, AnOldEntryIsTakenOutFirstAndOursIsLeft) {
    const auto claude = putProgram("claude", "echo \"$2\" >> \"$(dirname \"$0\")/words\"");
    put(home() / ".claude.json", R"({"mcpServers":{"tandrel":{"command":"/old"}}})");
    EXPECT_TRUE(connect().addToClaudeCode(claude).ok);
    EXPECT_EQ(textOf(home() / "words"), "remove\nadd\n");

    put(home() / ".claude.json",
        R"({"mcpServers":{"tandrel":{"command":"/opt/Tandrel/bin/tandrel"}}})");
    EXPECT_TRUE(connect().addToClaudeCode(claude).ok);
    EXPECT_EQ(textOf(home() / "words"), "remove\nadd\n");
}

// A program that answers nothing and is ended when its time is over.
class HangingProgram final : public Processes {
 public:
    Result<ProgramEnd> run(const ProgramRun& run) override {
        patience = run.timeout;
        return ProgramEnd{.how = ProgramEnd::How::timedOut, .output = " \n"};
    }
    Result<void> startDetached(const std::string&, const std::vector<std::string>&) override {
        return {};
    }
    Duration patience = Duration::zero();
};

TEST_F(ClaudeCodeTest, OneThatHangsIsEndedAfterAMinute) {
    HangingProgram hanging;
    const AIConnect ai(kHelper, places, {hanging, desktop, desktop, clock});
    EXPECT_EQ(ai.addToClaudeCode("/usr/bin/claude"),
              (Outcome{false, "claude exited with 124: no answer in 60 s"}));
    EXPECT_EQ(hanging.patience, std::chrono::seconds(60));
    EXPECT_EQ(ai.findClaude(), std::nullopt) << "a login shell that hangs names no program";
}

TEST_F(ClaudeCodeTest, WhatWentWrongIsPassedOn) {
    const std::pair<const char*, std::string> rows[] = {
        {"echo no server; echo of that kind >&2; exit 1",
         "claude exited with 1: no server\nof that kind"},
        {"exit 3", "claude exited with 3"},
        {"kill -TERM $$", "claude exited with 143"},
        {"head -c 1000000 /dev/zero | tr '\\0' x; exit 2",
         "claude exited with 2: " + std::string(64 * 1024, 'x')},
    };
    for (const auto& [script, message] : rows) {
        EXPECT_EQ(connect().addToClaudeCode(putProgram("claude", script)),
                  (Outcome{false, message}))
            << script;
    }
    put(home() / "plain", "x");
    EXPECT_EQ(connect().addToClaudeCode(home() / "plain").message,
              "claude exited with 127: can't start " + (home() / "plain").string() +
                  ": Permission denied");
}

TEST_F(ClaudeCodeTest, FindsTheNodeBesideIt) {
    putProgram("version/bin/node-of-this-test", "echo ran");
    const auto claude = putProgram("version/bin/claude", "node-of-this-test; exit 1");
    EXPECT_EQ(connect().addToClaudeCode(claude).message, "claude exited with 1: ran");
}

TEST_F(ClaudeCodeTest, BothAppsLinksAreRead) {
    EXPECT_EQ(connect().claudeCodeLink(), Link::notAdded);
    EXPECT_EQ(connect().claudeDesktopLink(), Link::notAdded);
    const std::pair<const char*, Link> rows[] = {
        {R"({"mcpServers":{"tandrel":{"command":"/opt/Tandrel/bin/tandrel","args":[]}}})",
         Link::addedHere},
        {R"({"mcpServers":{"tandrel":{"command":"/Volumes/Tandrel/Tandrel.app/Contents/MacOS/tandrel"}}})",
         Link::addedElsewhere},
        {R"({"mcpServers":{"tandrel":{"url":"x"}}})", Link::addedElsewhere},
        {R"({"mcpServers":{"tandrel":7}})", Link::addedElsewhere},
        {R"({"mcpServers":{"other":{"command":"/opt/Tandrel/bin/tandrel"}}})", Link::notAdded},
        {R"({"mcpServers":[]})", Link::notAdded},
        {R"({"tandrel":{"command":"/opt/Tandrel/bin/tandrel"}})", Link::notAdded},
        {"[]", Link::notAdded},
        {"{", Link::notAdded},
        {"", Link::notAdded},
    };
    for (const auto& [text, link] : rows) {
        put(home() / ".claude.json", text);
        put(desktopFile(), text);
        EXPECT_EQ(connect().claudeCodeLink(), link) << text;
        EXPECT_EQ(connect().claudeDesktopLink(), link) << text;
    }
}

class ClaudeDesktopTest : public AIConnectTest {};

TEST_F(ClaudeDesktopTest, TheEntryIsAddedAndAllElseKeptInItsOrder) {
    const std::string entry = R"("tandrel":{"command":"/opt/Tandrel/bin/tandrel","args":["mcp"]}})";
    const std::pair<std::string, std::string> rows[] = {
        {R"({"mcpServers":{"other":{"command":"/x"},"tandrel":{"command":"/old","env":{}}},)"
         R"("theme":"dark","big":18446744073709551615,"aText":"é\n"})",
         R"({"mcpServers":{"other":{"command":"/x"},)" + entry +
             R"(,"theme":"dark","big":18446744073709551615,"aText":"é\n"})"},
        {R"({"mcpServers":null,"a":1})", R"({"mcpServers":{)" + entry + R"(,"a":1})"},
        {"\xEF\xBB\xBF{\r\n  \"theme\": \"dark\"\r\n}\r\n",
         R"({"theme":"dark","mcpServers":{)" + entry + "}"},
    };
    for (const auto& [before, after] : rows) {
        put(desktopFile(), before);
        EXPECT_EQ(connect().addToClaudeDesktop(),
                  (Outcome{true, "Added (previous settings saved as " +
                                     backupOf(desktopFile()).filename().string() + ")"}));
        EXPECT_EQ(parseOrderedJson(textOf(desktopFile()))->dump(), after);
        EXPECT_EQ(connect().claudeDesktopLink(), Link::addedHere);
        EXPECT_EQ(textOf(backupOf(desktopFile())), before);
        fs::remove_all(desktopFile().parent_path());
    }
    EXPECT_EQ(connect().addToClaudeDesktop(), (Outcome{true, "Added"})) << "a missing file";
    EXPECT_EQ(parseOrderedJson(textOf(desktopFile()))->dump(), R"({"mcpServers":{)" + entry + "}");
}

TEST_F(ClaudeDesktopTest, AFileThatIsNoJsonObjectStaysByteForByte) {
    const Outcome refusal = {
        false,
        "Claude Desktop's settings file isn't valid JSON, so it was left as is. Add this by hand "
        "under \"mcpServers\":\n"
        "\"tandrel\": { \"command\": \"/opt/Tandrel/bin/tandrel\", \"args\": [\"mcp\"] }"};
    for (const std::string& text :
         {std::string(), std::string("[]"), std::string("{\"a\":1,}"), std::string("// x\n{}"),
          std::string("{\"a\":\"\xff\"}"), std::string(100'000, '['), std::string(4, '\0')}) {
        put(desktopFile(), text);
        EXPECT_EQ(connect().addToClaudeDesktop(), refusal);
        EXPECT_EQ(textOf(desktopFile()), text);
        EXPECT_THAT(namesIn(desktopFile().parent_path()),
                    testing::ElementsAre("claude_desktop_config.json"));
    }
}

TEST_F(ClaudeDesktopTest, IsRestartedOnceEveryInstanceHasEnded) {
    desktop.installed = "com.anthropic.claudefordesktop";
    EXPECT_TRUE(connect().claudeDesktopInstalled());
    EXPECT_FALSE(connect().claudeDesktopRunning());
    EXPECT_FALSE(connect().restartClaudeDesktop()) << "it does not run";
    EXPECT_TRUE(desktop.opened.empty());

    desktop.instances = 2;
    EXPECT_TRUE(connect().claudeDesktopRunning());
    EXPECT_TRUE(connect().restartClaudeDesktop());
    EXPECT_THAT(desktop.asked, testing::ElementsAre(10, 11));
    EXPECT_THAT(desktop.opened, testing::ElementsAre("/usr/share/applications/x.desktop"));

    desktop.instances = 1;
    desktop.quits = false;
    EXPECT_FALSE(connect().restartClaudeDesktop()) << "it asks whether to save";
    EXPECT_EQ(desktop.opened.size(), 1U);
}

}  // namespace
}  // namespace tandrel
