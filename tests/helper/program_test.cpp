#include "base/file.h"
#include "helper/app_side.h"
#include "helper/fake_engine.h"
#include "support/child_program.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

TEST(Program, KnowsItsArguments) {
    const auto run = [](const std::vector<std::string>& arguments) {
        std::vector<std::string> words = {TANDREL_BIN_DIR "/tandrel"};
        words.insert(words.end(), arguments.begin(), arguments.end());
        const auto [status, output] = runProgramToEnd(words, {});
        return std::to_string(status) + " " + output;
    };
    EXPECT_THAT(run({"--version"}), StartsWith("0 tandrel "));
    EXPECT_THAT(run({"--help"}), StartsWith("0 usage:"));
    EXPECT_EQ(run({"mcp"}), "0 ");
    EXPECT_THAT(run({}), StartsWith("2 usage:"));
    EXPECT_THAT(run({"mpc"}), StartsWith("2 usage:"));
    EXPECT_THAT(run({"mcp", "x"}), StartsWith("2 usage:"));
}

TEST(Program, EndsWhenTheAppClosesEitherSide) {
    for (void (AppSide::*close)() : {&AppSide::endInput, &AppSide::endOutput}) {
        AppSide app(AppSide::Environment{});
        app.send(request(1, "ping"));
        EXPECT_EQ(app.receive().at("id"), 1);
        (app.*close)();
        EXPECT_EQ(app.wait(), 0);
    }
}

class FindingTheEngine : public testing::Test {
 protected:
    void writeState(const std::string& folder, const std::string& state) {
        ASSERT_TRUE(replaceFile(home_.path() / folder / "tandrel/engine.json", state));
    }
    std::string statePort() const {
        return R"({"port":)" + std::to_string(engine_.port()) + R"(,"pid":1,"version":"1"})";
    }
    AppSide::Environment withHome(AppSide::Environment more = {}) {
        more["HOME"] = home_.path().string();
        return more;
    }
    // Whether a helper in this environment finds the engine.
    bool finds(const AppSide::Environment& more) {
        return AppSide(withHome(more)).call("iphone_get_status").at("isError") == false;
    }
    std::string refusal(const AppSide::Environment& more) {
        return AppSide(withHome(more)).refused("iphone_get_status");
    }

    TemporaryFolder home_;
    FakeEngine engine_;
    const std::string port_ = std::to_string(engine_.port());
};

TEST_F(FindingTheEngine, LooksInTheStateFolderUnlessTheEnvironmentNamesAnother) {
    writeState(".local/state", statePort());
    EXPECT_TRUE(finds({})) << "it needs nothing but HOME";
    writeState(".local/state", R"({"port":1})");
    writeState("state", statePort());
    EXPECT_TRUE(finds({{"XDG_STATE_HOME", (home_.path() / "state").string()}}));
    EXPECT_TRUE(finds({{"TANDREL_ENGINE_PORT", port_}}));
    EXPECT_TRUE(finds({{"TANDREL_ENGINE_PORT", "1"}, {"TANDREL_ENGINE_URL", engine_.url()}}));
    EXPECT_THAT(refusal({}), HasSubstr("127.0.0.1:1."));
    EXPECT_THAT(refusal({{"TANDREL_ENGINE_PORT", "70000"}}), HasSubstr("TANDREL_ENGINE_PORT"));
    EXPECT_THAT(refusal({{"TANDREL_ENGINE_URL", "http://example.org:80"}}),
                HasSubstr("TANDREL_ENGINE_URL"));
}

TEST_F(FindingTheEngine, SaysHowToStartItAndFindsItOnceItRuns) {
    writeState(".local/state", R"({"port":1})");
    AppSide app(withHome());
    for (const char* tool : {"iphone_get_status", "iphone_look", "iphone_go_home"}) {
        EXPECT_THAT(app.refused(tool),
                    testing::AllOf(HasSubstr("not running"), HasSubstr("tandrel-app")));
    }
    writeState(".local/state", statePort());
    app.done("iphone_go_home");
}

TEST_F(FindingTheEngine, TellsAStrangerFromTheEngine) {
    const auto page = [](int status, const char* text) {
        return [=](const HTTPRequest&) {
            HTTPResponse response;
            response.status = status;
            response.body = toBytes(text);
            return response;
        };
    };
    engine_.answer("/status", page(200, "<html>"));
    engine_.answer("/home", page(500, "oops"));
    AppSide app({{"TANDREL_ENGINE_PORT", port_}});
    EXPECT_THAT(app.refused("iphone_get_status"), HasSubstr("could not be understood"));
    EXPECT_THAT(app.refused("iphone_go_home"), HasSubstr("status 500"));
}

}  // namespace
}  // namespace tandrel
