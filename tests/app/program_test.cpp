#include <atomic>
#include <csignal>
#include <thread>

#include <gmock/gmock.h>

#include "app/running_program.h"
#include "base/file.h"
#include "http/server.h"
#include "http/socket.h"

namespace tandrel {
namespace {

using testing::AllOf;
using testing::EndsWith;
using testing::HasSubstr;
using testing::StartsWith;

using Variables = ChildProgram::Environment;

const Variables kVirtualPhone = {{"TANDREL_VIRTUAL_PHONE", "1"}};

std::string readText(const std::filesystem::path& path) {
    return readFile(path, 1 << 20).value_or("(not there)");
}

class Modes : public testing::Test {
 protected:
    ProgramResult run(const std::vector<std::string>& arguments, const Variables& more = {}) {
        return runApp(arguments, home_.path(), more);
    }
    std::filesystem::path file(const std::string& name, const std::string& text) {
        const auto path = home_.path() / name;
        EXPECT_TRUE(replaceFile(path, text));
        return path;
    }

    TemporaryFolder home_;
};

TEST_F(Modes, PrintWhatTheTableSaysAndEnd) {
    using Arguments = std::vector<std::string>;
    const std::string cases = TANDREL_SOURCE_DIR "/share/tandrel/guard/shops.json";
    const std::tuple<Arguments, int, testing::Matcher<std::string>> rows[] = {
        {{"--version"}, 0, testing::ContainsRegex("^Tandrel [0-9]+\\.[0-9]+\\.[0-9]+\n$")},
        {{"--version", "more"}, 0, StartsWith("Tandrel ")},
        {{"--guard-check"}, 1, StartsWith("can't read ")},
        {{"--guard-check", "/no/such.json"}, 1, StartsWith("can't read /no/such.json: ")},
        {{"--guard-check", cases}, 0, testing::ContainsRegex("^[1-9][0-9]* passed, 0 failed\n$")},
        {{"--self-test"},
         0,
         AllOf(testing::Not(HasSubstr("FAIL")), HasSubstr("guard: known_limits.json"),
               testing::ContainsRegex("\n[0-9]+ passed, 0 failed\n$"))},
        {{"--guard-rules"}, 0, AllOf(HasSubstr("pay-words\n"), HasSubstr("\n  leaves   "))},
        {{"--guard-rules", "--json"}, 0, StartsWith("{\"rules\":[{")},
        {{"--guard-report"}, 1, StartsWith("usage: ")},
        {{"--guard-report", "/no/such.json"}, 1, StartsWith("can't read /no/such.json: ")},
        {{"--guard-report", cases}, 0, StartsWith("27 cases, 0 of them read from a picture\n")},
        {{"--render-steps"}, 2, StartsWith("usage: tandrel-app --render-steps DIR ")},
        {{"--render-steps", "/dev/null/x"}, 1, HasSubstr("can't make /dev/null/x: ")},
        {{"--approvals"}, 0, "No payment has been asked about yet.\n"},
        {{"--approvals", "--json"}, 0, "{\"approvals\":[],\"unreadable\":0}\n"},
        {{"--help"},
         0,
         AllOf(HasSubstr("usage: tandrel-app"), HasSubstr("--guard-check FILE"),
               HasSubstr("--ask-here"))},
        {{"detect-rect", "/no/such.png"}, 1, HasSubstr("/no/such.png")},
    };
    for (const auto& [arguments, code, printed] : rows) {
        const auto [status, output] = run(arguments);
        const std::string name = testing::PrintToString(arguments);
        EXPECT_EQ(status, code) << name;
        EXPECT_THAT(output, printed) << name;
    }
    EXPECT_FALSE(std::filesystem::exists(home_.path() / ".local/state/tandrel/Tandrel.log"))
        << "only the application writes a log";
}

TEST_F(Modes, SetChangesASettingOrSaysHow) {
    const auto settings = home_.path() / ".config/tandrel/settings.json";
    using Arguments = std::vector<std::string>;
    for (const Arguments& arguments :
         {Arguments{"--set"}, Arguments{"--set", "paused"}, Arguments{"--set", "paused", "yes"},
          Arguments{"--set", "link", "true"}, Arguments{"--set", "askBeforePayments", "false"},
          Arguments{"--set", "askWhenUnsure", "false"},
          Arguments{"--set", "paused", "true", "now"}}) {
        const auto [status, output] = run(arguments);
        EXPECT_EQ(status, 2) << testing::PrintToString(arguments);
        EXPECT_THAT(output, StartsWith("usage: tandrel-app --set paused true|false\n"));
        EXPECT_FALSE(std::filesystem::exists(settings));
    }
    EXPECT_EQ(run({"--set", "paused", "true"}).output, "paused = true\n");
    EXPECT_EQ(run({"--set", "link", "airplay"}).output, "link = airplay\n");
    const Json kept = Json::parse(readText(settings));
    EXPECT_EQ(kept, Json({{"paused", true}, {"link", "airplay"}}));
    EXPECT_EQ(run({"--set", "paused", "true"}, {{"HOME", "/proc"}}).status, 1)
        << "a setting that cannot be kept is not reported as kept";
}

TEST_F(Modes, AScenarioOrPictureThatIsNoneIsNamedWithThePlace) {
    const std::tuple<const char*, std::filesystem::path, const char*> rows[] = {
        {"TANDREL_VIRTUAL_PHONE", "/no/such.json", "No such file or directory"},
        {"TANDREL_VIRTUAL_PHONE", "/", "it is a folder"},
        {"TANDREL_VIRTUAL_PHONE", file("torn.json", "{\"phone\": {"), "line 1, column 12"},
        {"TANDREL_VIRTUAL_PHONE", file("number.json", "7"), "must be"},
        {"TANDREL_VIRTUAL_PHONE", file("slip.json", R"({"phone": {"id": 7}})"), "/phone/id: "},
        {"TANDREL_CAPTURE_IMAGES", "/no/such.png", "No such file or directory"},
        {"TANDREL_CAPTURE_IMAGES", file("text.png", "hello"), "neither a PNG nor a JPEG picture"},
    };
    for (const auto& [variable, path, why] : rows) {
        const auto [status, output] = run({}, {{variable, path.string()}});
        EXPECT_EQ(status, 1) << path;
        EXPECT_THAT(output, AllOf(HasSubstr(path.string()), HasSubstr(why)));
        EXPECT_EQ(std::ranges::count(output, '\n'), 1) << output;
    }
}

TEST(Application, WordsThatAreNoModeStartIt) {
    for (const char* word : {"--frobnicate", "usb-capturing", ""}) {
        RunningProgram program(kVirtualPhone, {word});
        EXPECT_EQ(program.get("/status").json()["app"], "Tandrel") << word;
    }
}

TEST(Application, EndsOnASignalAndLeavesNothingBehind) {
    for (const int number : {SIGINT, SIGTERM, SIGHUP}) {
        RunningProgram program(kVirtualPhone);
        const Json state = Json::parse(readText(program.stateFile()));
        EXPECT_EQ(state["port"], program.port());
        EXPECT_EQ(state["pid"], program.process().pid());
        program.process().signal(number);
        EXPECT_EQ(program.process().wait(), 0) << program.process().output();
        EXPECT_FALSE(std::filesystem::exists(program.stateFile()));
        for (const char* port : {"port", "airplayPort"}) {
            const auto url = LoopbackUrl::ofPort(state[port]);
            EXPECT_FALSE(httpGet(url, "/status")) << port << " is still served";
        }
    }
}

TEST(Application, ASignalEndsAClientsWait) {
    RunningProgram program(
        Variables{{"TANDREL_VIRTUAL_PHONE", "1"}, {"TANDREL_GUARD_TIMEOUT", "120"}});
    program.awaitMatched();
    program.post("/tap", {{"x", 0.152}, {"y", 0.131}, {"fraction", true}});  // Shop
    program.awaitText("Canvas tote bag");
    // The shop's first price. While nobody can be asked, this takes all of the owner's time.
    const std::jthread waiting([&] {
        (void)httpPost(LoopbackUrl::ofPort(program.port()), "/tap",
                       {{"x", 0.8}, {"y", 0.2}, {"fraction", true}},
                       {.timeout = std::chrono::seconds(60)});
    });
    program.awaitStatus([](const Json& status) { return status.contains("asking"); });
    program.process().signal(SIGINT);
    EXPECT_EQ(program.process().wait(), 0) << program.process().output();
}

TEST(Application, APortThatIsTakenIsSaidAndTheRestGoesOn) {
    const Socket silent = *listenOnLoopback(0);
    const Socket other = *listenOnLoopback(0);
    const std::string port = std::to_string(boundPort(silent));
    const std::string airplay = std::to_string(boundPort(other));
    RunningProgram program(
        Variables{{"TANDREL_ENGINE_PORT", port}, {"TANDREL_AIRPLAY_PORT", airplay}});
    const std::string reason = "can't listen on 127.0.0.1:" + port + ": ";
    EXPECT_THAT(program.process().output(),
                AllOf(HasSubstr("engine: " + reason), HasSubstr("The API is not served: " + reason),
                      HasSubstr("airplay: can't listen on 127.0.0.1:" + airplay + ": ")));
    EXPECT_FALSE(std::filesystem::exists(program.stateFile()));
    program.process().signal(SIGTERM);
    EXPECT_EQ(program.process().wait(), 0);
}

TEST(Application, ASecondCopyUsesTheFirst) {
    RunningProgram first(kVirtualPhone);
    const std::string port = std::to_string(first.port());
    RunningProgram second(Variables{{"TANDREL_ENGINE_PORT", port}}, {}, first.homeFolder());
    EXPECT_THAT(second.process().output(),
                AllOf(HasSubstr("engine: port " + port + " is served by Tandrel; using it"),
                      HasSubstr("Tandrel already serves port " + port + "; this copy uses it.")));
    second.process().signal(SIGINT);
    EXPECT_EQ(second.process().wait(), 0);
    EXPECT_EQ(first.get("/status").status, 200);
    EXPECT_TRUE(std::filesystem::exists(first.stateFile())) << "the first copy's file";
}

TEST(Application, ASignalCutsTheWaitForAnEarlierCopyShort) {
    std::atomic<int> probes = 0;
    HTTPServer earlier(0, [&](const HTTPRequest&) {
        ++probes;
        probes.notify_all();
        return HTTPResponse::json({{"app", "Tandrel"}});
    });
    ASSERT_TRUE(earlier.start());
    TemporaryFolder home;
    ChildProgram program(
        {RunningProgram::kPath},
        plainEnvironment(home.path(), {{"TANDREL_ENGINE_PORT", std::to_string(earlier.port())}}));
    probes.wait(0);
    program.signal(SIGINT);
    EXPECT_EQ(program.wait(), 0);
    EXPECT_LT(probes, 7) << "it waited to the end";
    earlier.stop();
}

TEST(Application, WithoutAnEngineItServesNothing) {
    RunningProgram program(Variables{{"TANDREL_NO_ENGINE", "1"}});
    EXPECT_THAT(program.process().output(),
                HasSubstr("The API is not served: engine disabled (TANDREL_NO_ENGINE=1).\n"));
    EXPECT_FALSE(std::filesystem::exists(program.stateFile()));
    RunningProgram other(Variables{{"TANDREL_NO_ENGINE", "true"}});
    EXPECT_EQ(other.get("/status").status, 200);
}

TEST(Application, ServesWithoutAHomeThatItCanWriteTo) {
    TemporaryFolder folder;
    const std::string files = folder.path().string();
    for (const Variables& home :
         {Variables{{"HOME", "/proc"}}, Variables{{"HOME", ""},
                                                  {"XDG_CONFIG_HOME", files},
                                                  {"XDG_DATA_HOME", files},
                                                  {"XDG_STATE_HOME", files}}}) {
        Variables variables = home;
        variables.insert(kVirtualPhone.begin(), kVirtualPhone.end());
        RunningProgram program(variables);
        program.awaitMatched();
        const auto reply = program.post("/home", Json::object());
        EXPECT_EQ(reply.status, 200) << toText(reply.body);
        program.process().signal(SIGTERM);
        EXPECT_EQ(program.process().wait(), 0) << program.process().output();
    }
    EXPECT_TRUE(std::filesystem::exists(folder.path() / "Tandrel/pairings.json"));
}

TEST(Application, ReadsAPictureFileAndSaysWhatThisComputerLacks) {
    TemporaryFolder folder;
    const auto picture = folder.path() / "phone.png";
    {
        RunningProgram phone(kVirtualPhone);
        phone.awaitPicture();
        ASSERT_TRUE(replaceFile(picture, toText(phone.get("/screenshot").body)));
    }
    RunningProgram program(Variables{{"TANDREL_CAPTURE_IMAGES", picture.string()}});
    program.awaitText("Settings");
    const auto tap = program.post("/tap", {{"x", 0.5}, {"y", 0.5}, {"fraction", true}});
    EXPECT_EQ(tap.status, 400);
    EXPECT_THAT(toText(tap.body), HasSubstr("has no Bluetooth connection"));
    const Json status = program.get("/status").json();
    EXPECT_FALSE(status.contains("absent")) << status;
    EXPECT_THAT(status.value("bluetoothAdvice", ""), HasSubstr("Bluetooth"));
}

TEST(Application, WithoutPhoneAndPictureItStillAnswers) {
    RunningProgram program;
    const Json status = program.get("/status").json();
    EXPECT_EQ(status["absent"].size(), 1U) << "the cable";
    EXPECT_EQ(status["devices"], Json::array());
    EXPECT_EQ(program.get("/screenshot").status, 400);
    EXPECT_EQ(program.post("/home", Json::object()).status, 400);
}

TEST(Application, WithoutTrainedDataItShowsButLetsNothingThrough) {
    TemporaryFolder empty;
    Variables variables = kVirtualPhone;
    variables["TESSDATA_PREFIX"] = empty.path().string();
    RunningProgram program(variables);
    program.awaitMatched();
    const Json look = program.get("/look?maxEdge=300").json();
    EXPECT_EQ(look["X-Image-Height"], 300);
    EXPECT_FALSE(look["image"].get<std::string>().empty());
    EXPECT_EQ(look["lines"], Json::array());
    ASSERT_EQ(look["unread"].size(), 1U);
    EXPECT_EQ(look["unread"][0]["h"], 300);
    EXPECT_THAT(look["readError"].get<std::string>(), HasSubstr("install tesseract-ocr-eng"));
    const auto tap = program.post("/tap", {{"x", 0.616}, {"y", 0.243}, {"fraction", true}});
    EXPECT_EQ(tap.status, 409);
    EXPECT_EQ(tap.json()["error"],
              "Not done: Tandrel can't read the iPhone's screen right now, so it can't check this "
              "action. Read the screen again (screenshot) and repeat.");
    EXPECT_EQ(program.post("/home", Json::object()).status, 200) << "Home pays nothing";
}

}  // namespace
}  // namespace tandrel
