#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/file.h"
#include "helper/app_side.h"
#include "helper/fake_engine.h"
#include "support/child_program.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

using testing::HasSubstr;
using testing::StartsWith;
using Outcome = AppSide::Outcome;

const std::string kProgram = TANDREL_BIN_DIR "/tandrel";

TEST(Program, KnowsItsArguments) {
    struct Case {
        std::vector<std::string> arguments;
        int status;
        const char* says;
    };
    for (const Case& row :
         {Case{{"--version"}, 0, "tandrel "}, Case{{"--help"}, 0, "usage:"}, Case{{}, 2, "usage:"},
          Case{{"mpc"}, 2, "usage:"}, Case{{"mcp", "x"}, 2, "usage:"}, Case{{"mcp"}, 0, ""}}) {
        std::vector<std::string> words = {kProgram};
        words.insert(words.end(), row.arguments.begin(), row.arguments.end());
        const auto [status, output] = runProgramToEnd(words, {});
        EXPECT_EQ(status, row.status) << output;
        EXPECT_THAT(output, StartsWith(row.says));
    }
}

TEST(Program, EndsWhenTheAppClosesEitherSide) {
    AppSide first(AppSide::Environment{});
    first.send(request(1, "ping"));
    EXPECT_EQ(first.receive().at("id"), 1);
    first.endInput();
    EXPECT_EQ(first.wait(), 0);

    AppSide second(AppSide::Environment{});
    second.send(request(1, "ping"));
    EXPECT_EQ(second.receive().at("id"), 1);
    second.endOutput();
    EXPECT_EQ(second.wait(), 0);
}

class FindingTheEngine : public testing::Test {
 protected:
    void writeState(const std::string& folder, const std::string& state) {
        ASSERT_TRUE(replaceFile(home_.path() / folder / "tandrel/engine.json", state));
    }
    std::string statePort() const {
        return R"({"port":)" + std::to_string(engine_.port()) + R"(,"pid":1,"version":"1"})";
    }
    std::string status(const AppSide::Environment& more, Outcome outcome) {
        AppSide::Environment environment = {{"HOME", home_.path().string()}};
        environment.insert(more.begin(), more.end());
        return AppSide(environment).callForText("iphone_get_status", Json::object(), outcome);
    }

    TemporaryFolder home_;
    FakeEngine engine_;
    const std::string port_ = std::to_string(engine_.port());
};

TEST_F(FindingTheEngine, NeedsNothingButHome) {
    writeState(".local/state", statePort());
    EXPECT_THAT(status({}, Outcome::done), HasSubstr("Tandrel"));
}

TEST_F(FindingTheEngine, LooksInTheStateFolderThatTheEnvironmentNames) {
    writeState("state", statePort());
    EXPECT_THAT(status({{"XDG_STATE_HOME", (home_.path() / "state").string()}}, Outcome::done),
                HasSubstr("Tandrel"));
}

TEST_F(FindingTheEngine, PrefersTheEnvironment) {
    writeState(".local/state", R"({"port":1})");
    EXPECT_THAT(status({}, Outcome::refused), HasSubstr("127.0.0.1:1."));
    EXPECT_THAT(status({{"TANDREL_ENGINE_PORT", port_}}, Outcome::done), HasSubstr("Tandrel"));
    EXPECT_THAT(status({{"TANDREL_ENGINE_PORT", "1"}, {"TANDREL_ENGINE_URL", engine_.url()}},
                       Outcome::done),
                HasSubstr("Tandrel"));
}

TEST_F(FindingTheEngine, NamesASettingThatIsWrong) {
    EXPECT_THAT(status({{"TANDREL_ENGINE_PORT", "70000"}}, Outcome::refused),
                HasSubstr("TANDREL_ENGINE_PORT"));
    EXPECT_THAT(status({{"TANDREL_ENGINE_URL", "http://example.org:80"}}, Outcome::refused),
                HasSubstr("TANDREL_ENGINE_URL"));
}

TEST_F(FindingTheEngine, SaysHowToStartItAndFindsItOnceItRuns) {
    writeState(".local/state", R"({"port":1})");
    AppSide app({{"HOME", home_.path().string()}});
    for (const char* tool : {"iphone_get_status", "iphone_look", "iphone_go_home"}) {
        EXPECT_THAT(app.callForText(tool, Json::object(), Outcome::refused),
                    testing::AllOf(HasSubstr("not running"), HasSubstr("tandrel-app")));
    }
    writeState(".local/state", statePort());
    app.callForText("iphone_go_home", Json::object(), Outcome::done);
}

TEST_F(FindingTheEngine, TellsAStrangerFromTheEngine) {
    engine_.answer("/status", [](const HTTPRequest&) {
        HTTPResponse page;
        page.contentType = "text/html";
        page.body = toBytes("<html>");
        return page;
    });
    engine_.answer("/home", [](const HTTPRequest&) {
        HTTPResponse page;
        page.status = 500;
        page.body = toBytes("oops");
        return page;
    });
    AppSide app({{"TANDREL_ENGINE_PORT", port_}});
    EXPECT_THAT(app.callForText("iphone_get_status", Json::object(), Outcome::refused),
                HasSubstr("could not be understood"));
    EXPECT_THAT(app.callForText("iphone_go_home", Json::object(), Outcome::refused),
                HasSubstr("status 500"));
}

TEST(Program, TwoHelpersAtOnceDoNotMix) {
    FakeEngine engine;
    const AppSide::Environment environment = {{"TANDREL_ENGINE_URL", engine.url()}};
    AppSide first(environment);
    AppSide second(environment);
    first.call("iphone_look");
    EXPECT_THAT(second.callForText("iphone_tap", {{"x", 5}, {"y", 5}}, Outcome::refused),
                HasSubstr("iphone_look"));
    first.callForText("iphone_tap", {{"x", 5}, {"y", 5}}, Outcome::done);
    EXPECT_EQ(engine.requests("/tap").size(), 1U);
}

}  // namespace
}  // namespace tandrel
