#include "app/status_helper_check.h"

#include <fstream>

#include <gtest/gtest.h>

#include "platform/linux/child_processes.h"
#include "platform/linux/json_user_defaults.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

namespace fs = std::filesystem;

class FakeAttributes final : public ExtendedAttributes {
 public:
    std::optional<std::string> text(const fs::path& file, std::string_view name) override {
        if (name != "com.apple.quarantine" || file != bundle) return std::nullopt;
        return quarantine;
    }
    fs::path bundle;
    std::optional<std::string> quarantine;
};

// A bundle whose helper is a shell script.
class HelperCheckTest : public testing::Test {
 protected:
    HelperCheckTest() {
        info_.version = "1.2";
        info_.bundle = folder_.path() / "Tandrel";
        attributes_.bundle = info_.bundle;
    }
    HelperCheck check() { return {info_, {processes_, defaults_, attributes_}}; }
    std::string state() { return describe(check().state()); }
    std::string run(Duration timeout = std::chrono::seconds(60)) {
        return describe(check().run(timeout));
    }
    void putHelper(const std::string& script) {
        fs::create_directories(info_.bundle / "bin");
        std::ofstream(info_.bundle / "bin/tandrel") << "#!/bin/sh\n" + script + "\n";
        fs::permissions(info_.bundle / "bin/tandrel", fs::perms::owner_all);
    }

    TemporaryFolder folder_;
    AppInfo info_;
    ChildProcesses processes_;
    JsonUserDefaults defaults_{folder_.path() / "settings.json"};
    FakeAttributes attributes_;
};

TEST_F(HelperCheckTest, ARightAnswerIsRememberedForThisVersionAndPlace) {
    putHelper("[ \"$*\" = --version ] && echo tandrel 1.2");
    attributes_.quarantine = "0081;5f3b;Browser;";
    EXPECT_EQ(state(), "needsApproval");
    EXPECT_EQ(run(), "ready");
    EXPECT_EQ(state(), "ready");
    EXPECT_EQ(defaults_.textValue("helperRan"), "1.2|" + info_.bundle.string());

    info_.version = "1.3";
    EXPECT_EQ(state(), "needsApproval");
    info_.version = "1.2";
    fs::rename(info_.bundle, folder_.path() / "Moved");
    info_.bundle = attributes_.bundle = folder_.path() / "Moved";
    EXPECT_EQ(state(), "needsApproval");
}

TEST_F(HelperCheckTest, FlagsOfTheBundleSayWhetherTheOwnerApproved) {
    putHelper("");
    EXPECT_EQ(state(), "ready");
    for (const char* text : {"0081;x;y;z", "0", "3F;"}) {
        attributes_.quarantine = text;
        EXPECT_EQ(state(), "needsApproval") << text;
    }
    for (const char* text :
         {"00c1;x", "40", "", ";0081", "0x81;", "81 ;", "-81;", "fffffffffffffffff"}) {
        attributes_.quarantine = text;
        EXPECT_EQ(state(), "ready") << text;
    }
}

TEST_F(HelperCheckTest, WrongAnswersSayWhatCame) {
    const std::pair<const char*, const char*> rows[] = {
        {"exit 1", R"(failed("exit 1"))"},
        {"echo tandrel; exit 3", R"(failed("tandrel"))"},
        {"echo no; echo library >&2", R"(failed("no\nlibrary"))"},
        {"echo Tandrel 1", R"(failed("Tandrel 1"))"},
        {":", R"(failed("exit 0"))"},
        {"kill -KILL $$", R"(failed("exit 9"))"},
        {"echo tandrel 1; echo more >&2", "ready"},
    };
    for (const auto& [script, expected] : rows) {
        putHelper(script);
        EXPECT_EQ(run(), expected) << script;
    }
}

TEST_F(HelperCheckTest, AHelperThatHangsIsBlockedAndOneThatIsNoProgramMissing) {
    EXPECT_EQ(state(), "missing");
    EXPECT_EQ(run(), "missing");
    putHelper("echo tandrel; exec sleep 1000");
    EXPECT_EQ(run(std::chrono::milliseconds(200)), "blocked");
    EXPECT_EQ(defaults_.textValue("helperRan"), std::nullopt);
    fs::permissions(info_.bundle / "bin/tandrel", fs::perms::owner_read);
    EXPECT_EQ(state(), "missing");
    fs::permissions(info_.bundle / "bin/tandrel", fs::perms::owner_all);
    std::ofstream(info_.bundle / "bin/tandrel") << "#!/nowhere/interpreter\n";
    EXPECT_EQ(run(), "failed(\"can't start " + (info_.bundle / "bin/tandrel").string() +
                         ": No such file or directory\")");
}

}  // namespace
}  // namespace tandrel
