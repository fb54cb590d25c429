
#include <gmock/gmock.h>

#include "app/running_program.h"
#include "base/file.h"

namespace tandrel {
namespace {

using testing::AllOf;
using testing::ContainsRegex;
using testing::EndsWith;
using testing::HasSubstr;
using testing::Not;
using testing::StartsWith;

namespace fs = std::filesystem;

// A running application, with a virtual phone that differs from the default one in `traits`, and
// the modes that its owner starts beside it.
class OwnerModes : public testing::Test {
 protected:
    void start(const Json& traits = Json::object()) {
        const fs::path shipped = TANDREL_SOURCE_DIR "/share/tandrel/scenarios/default.json";
        Json scenario = Json::parse(readFile(shipped, 1 << 20).value());
        scenario["phone"].update(traits);
        const fs::path file = home_->path() / "phone.json";
        EXPECT_TRUE(replaceFile(file, scenario.dump()));
        program_ = std::make_unique<RunningProgram>(
            ChildProgram::Environment{{"TANDREL_VIRTUAL_PHONE", file.string()}},
            std::vector<std::string>{}, home_);
        port_ = std::to_string(program_->port());
        program_->awaitMatched();
    }
    ProgramResult run(const std::vector<std::string>& arguments) {
        return runApp(arguments, home_->path(), {{"TANDREL_ENGINE_PORT", port_}});
    }

    const std::shared_ptr<TemporaryFolder> home_ = std::make_shared<TemporaryFolder>();
    std::unique_ptr<RunningProgram> program_;
    std::string port_ = "1";  // nobody serves it
};

TEST_F(OwnerModes, ThePhoneTestPassesOnTheDefaultPhone) {
    start();
    const auto [status, output] = run({"--phone-test"});
    EXPECT_EQ(status, 0);
    EXPECT_THAT(output,
                AllOf(ContainsRegex("✓ See the iPhone's screen\n  USB cable. It can read: [^\n]*"
                                    "(Shop|Bank|Notes)[^\n]*\n✓ Press Home\n✓ Move the pointer\n"
                                    "  AssistiveTouch is on\n✓ Open Settings by typing\n"
                                    "✓ Back to the Home screen\n"),
                      HasSubstr("\nEverything works. Ask your AI something like “Open Settings on "
                                "my iPhone and tell me which iOS version it has.”\n")));
}

TEST_F(OwnerModes, ThePhoneTestSaysWhatIsMissing) {
    const std::tuple<Json, const char*, const char*> rows[] = {
        {{{"screen", "asleep"}},
         "✗ See the iPhone's screen\n  The screen is off. Press the iPhone's side button and "
         "unlock it, then test again.\n",
         "\nNothing was done on the iPhone.\n"},
        {{{"assistiveTouch", false}, {"paired", true}},
         "! Move the pointer\n  The pointer didn't show up, so taps won't work. On the iPhone, "
         "turn on Settings › Accessibility › Touch › AssistiveTouch.\n✓ Open Settings by typing\n",
         "\nTyping works, but taps won't until AssistiveTouch is on.\n"},
        {{{"keyboard", "russian"}},
         "✗ Open Settings by typing\n  Settings didn't open. If the iPhone shows a search screen "
         "with the wrong letters, set Settings › General › Keyboard › Hardware Keyboard to U.S. "
         "and test again.\n✓ Back to the Home screen\n",
         "\nSome of it didn't work yet. Fix the part marked above and test again.\n"},
    };
    for (const auto& [traits, line, end] : rows) {
        start(traits);
        const auto [status, output] = run({"--phone-test"});
        EXPECT_EQ(status, 1) << traits;
        EXPECT_THAT(output, AllOf(HasSubstr(line), HasSubstr(end))) << traits;
        program_.reset();
    }
}

TEST_F(OwnerModes, WithoutAnEngineThePhoneTestAndTheDoctorSaySo) {
    const auto [status, output] = run({"--phone-test"});
    EXPECT_EQ(status, 1);
    EXPECT_EQ(output,
              "Tandrel's phone connection isn't answering. Quit Tandrel and open it again.\n");
    const auto doctor = run({"--doctor"});
    EXPECT_EQ(doctor.status, 1);
    EXPECT_THAT(doctor.output,
                AllOf(StartsWith("NO  Engine          nothing answers on http://127.0.0.1:1\n"),
                      HasSubstr("\nAn assistant can't use the iPhone now.\n"),
                      EndsWith("Next: Start Tandrel: run `tandrel-app` and leave it running.\n")));
}

TEST_F(OwnerModes, TheDoctorAndThePhoneTestFollowTheCondition) {
    start();
    auto doctor = run({"--doctor"});
    EXPECT_EQ(doctor.status, 0) << doctor.output;
    EXPECT_THAT(doctor.output, AllOf(Not(HasSubstr("NO ")), HasSubstr("AI apps can start it"),
                                     HasSubstr("\nAn assistant could use the iPhone now.\n")));

    ASSERT_EQ(run({"--set", "paused", "true"}).status, 0);
    doctor = run({"--doctor", "--json"});
    EXPECT_EQ(doctor.status, 1);
    const Json said = Json::parse(doctor.output);
    EXPECT_EQ(said["ready"], false);
    EXPECT_THAT(said["next"].get<std::string>(), HasSubstr("--set paused false"));
    std::map<std::string, std::string> states;
    for (const Json& condition : said["conditions"]) {
        states[condition["name"]] = condition["state"];
    }
    EXPECT_EQ(states["Control"], "bad");
    EXPECT_EQ(states["Picture"], "good");
    EXPECT_EQ(states["Screen"], "good");
    const auto [status, output] = run({"--phone-test"});
    EXPECT_EQ(status, 1);
    EXPECT_THAT(output, HasSubstr("✗ Control is paused\n  Control is paused. Turn it back on in "
                                  "the Tandrel menu, then test again.\n"));
    EXPECT_THAT(output, HasSubstr("\nNothing was done on the iPhone.\n"));
}

TEST_F(OwnerModes, TheHelperCheckRunsTheHelperOnlyWhenToldTo) {
    const auto settings = home_->path() / ".config/tandrel/settings.json";
    EXPECT_EQ(run({"--helper-check"}).output, "state: ready\n");
    EXPECT_EQ(run({"--helper-check", "walk"}).output, "state: ready\n");
    EXPECT_FALSE(fs::exists(settings));
    EXPECT_EQ(run({"--helper-check", "run"}).output, "state: ready\nrun: ready\n");
    const Json kept = Json::parse(readFile(settings, 10'000).value());
    EXPECT_THAT(kept["helperRan"].get<std::string>(),
                EndsWith("|" + fs::canonical(TANDREL_BIN_DIR "/..").string()));
}

TEST_F(OwnerModes, AnAIAppIsConnectedFromTheCommandLine) {
    const fs::path codex = home_->path() / ".codex/config.toml";
    EXPECT_THAT(run({"--connect"}).output, HasSubstr("\ncodex           not on this computer\n"));
    const auto added = run({"--connect", "codex"});
    EXPECT_EQ(added.status, 0);
    EXPECT_EQ(added.output, "Added. Start a new Codex session to use it.\n");
    EXPECT_THAT(readFile(codex, 10'000).value(), HasSubstr("[mcp_servers.tandrel]\ncommand = \""));
    EXPECT_THAT(run({"--connect"}).output, HasSubstr("codex           uses this copy of Tandrel"));

    const fs::path program = home_->path() / ".local/bin/codex";
    fs::create_directories(program.parent_path());
    ASSERT_TRUE(replaceFile(program, "#!/bin/sh\n"));
    fs::permissions(program, fs::perms::owner_all);
    ASSERT_TRUE(replaceFile(codex, ""));
    EXPECT_THAT(run({"--connect"}).output,
                HasSubstr("codex           has lost its entry for Tandrel\n"));
    ASSERT_TRUE(replaceFile(codex, "mcp_servers = {}\n"));
    const auto refused = run({"--connect", "codex"});
    EXPECT_EQ(refused.status, 1);
    EXPECT_THAT(refused.output, AllOf(HasSubstr("a way Tandrel can't safely edit"),
                                      HasSubstr("\n\n[mcp_servers.tandrel]\n")));
    EXPECT_EQ(run({"--connect", "x"}).status, 2);
    EXPECT_EQ(run({"--connect", "codex", "now"}).status, 2);
}

}  // namespace
}  // namespace tandrel
