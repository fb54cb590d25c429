#include <functional>

#include <gmock/gmock.h>
#include <sys/wait.h>
#include <unistd.h>

#include "aiconnect/ai_connect_fixture.h"
#include "aiconnect/crash_points.h"

namespace tandrel {
namespace {

namespace fs = std::filesystem;

// Other apps' settings edited while the editing program dies, or while others write.
class CrashTest : public AIConnectTest {
 protected:
    struct App {
        const char* name;
        fs::path file;
        std::string before;
        std::function<bool()> add;
    };
    std::vector<App> apps() {
        return {{"Codex", codexFile(), "model = \"o4\"\n[a]\nb = 1\n",
                 [this] { return connect().addToCodex().ok; }},
                {"Claude Desktop", desktopFile(), R"({"theme":"dark"})",
                 [this] { return connect().addToClaudeDesktop().ok; }}};
    }
    static void start(const App& app, const std::optional<std::string>& text) {
        fs::remove_all(app.file.parent_path());
        if (text) put(app.file, *text);
    }
    static std::string edited(const App& app, const std::optional<std::string>& before) {
        start(app, before);
        EXPECT_TRUE(app.add()) << app.name;
        return textOf(app.file);
    }
    // Whether the program went on to its end, having died at no moment.
    static bool diesAt(int moment, const App& app) {
        const pid_t child = ::fork();
        if (child == 0) {
            CrashPoints::at(moment, [] { ::_exit(9); });
            ::_exit(app.add() ? 0 : 1);
        }
        int status = 0;
        ::waitpid(child, &status, 0);
        EXPECT_TRUE(WIFEXITED(status) && WEXITSTATUS(status) != 1) << app.name << " at " << moment;
        return WIFEXITED(status) && WEXITSTATUS(status) == 9;
    }
};

TEST_F(CrashTest, KilledAtAnyMomentTheFileIsWholeOldOrNew) {
    for (const App& app : apps()) {
        for (const auto& before : {std::optional(app.before), std::optional<std::string>()}) {
            const std::string after = edited(app, before);
            int oldFound = 0;
            int newFound = 0;
            int moment = 1;
            for (start(app, before); diesAt(moment, app); start(app, before), ++moment) {
                if (!fs::exists(app.file)) {
                    EXPECT_FALSE(before) << app.name << ": lost at moment " << moment;
                    ++oldFound;
                } else if (textOf(app.file) == after) {
                    ++newFound;
                } else {
                    EXPECT_EQ(textOf(app.file), before.value_or(""))
                        << app.name << " at " << moment;
                    ++oldFound;
                }
                if (fs::exists(backupOf(app.file))) {
                    EXPECT_EQ(textOf(backupOf(app.file)), before) << "a part of a backup";
                }
            }
            // Two moments at least for each of: create, mode, write, sync, put in place, sync.
            EXPECT_GT(oldFound, 10) << app.name;
            EXPECT_GT(newFound, 2) << app.name;
            EXPECT_TRUE(app.add()) << app.name << ": what a crash leaves is no hindrance";
            EXPECT_EQ(textOf(app.file), after);
        }
    }
}

TEST_F(CrashTest, WhatAnotherProgramWritesAtAnyMomentIsKept) {
    const fs::path other = home() / "other";
    for (const App& app : apps()) {
        const bool json = app.name != std::string("Codex");
        const std::string theirs = json ? R"({"theirs":1})" : "theirs = 1\n";
        const auto byRenaming = [&] {
            put(other, theirs);
            fs::rename(other, app.file);
        };
        const auto inPlace = [&] { put(app.file, theirs); };
        for (const std::function<void()>& write : {std::function<void()>(byRenaming), {inPlace}}) {
            for (const auto& before : {std::optional(app.before), std::optional<std::string>()}) {
                start(app, before);
                CrashPoints::at(0, {});
                ASSERT_TRUE(app.add());
                const int moments = CrashPoints::count();
                ASSERT_GT(moments, 10);
                for (int moment = 1; moment <= moments; ++moment) {
                    start(app, before);
                    CrashPoints::at(moment, write);
                    ASSERT_TRUE(app.add()) << app.name << " at " << moment;
                    EXPECT_NE(textOf(app.file).find("theirs"), std::string::npos)
                        << app.name << ": overwritten at moment " << moment << " of " << moments;
                }
            }
        }
    }
}

TEST_F(CrashTest, TwoCopiesEditingAtOnceLeaveOneEntry) {
    for (const App& app : apps()) {
        const std::string after = edited(app, app.before);
        start(app, app.before);
        std::vector<pid_t> children;
        for (int i = 0; i < 4; ++i) {
            children.push_back(::fork());
            if (children.back() == 0) ::_exit(app.add() ? 0 : 1);
        }
        for (const pid_t child : children) {
            int status = 0;
            ::waitpid(child, &status, 0);
            EXPECT_EQ(status, 0) << app.name;
        }
        EXPECT_EQ(textOf(app.file), after) << app.name;
    }
}

}  // namespace
}  // namespace tandrel
