#include <cmath>

#include "helper/app_side.h"
#include "helper/fake_engine.h"
#include "helper/screen_memory.h"

namespace tandrel {
namespace {

using testing::HasSubstr;

class Tools : public testing::Test {
 protected:
    FakeEngine engine_;
    AppSide app_;
};

// One call after a look at a picture of 723 x 1568 pixels, and what the engine is asked then.
// clang-format off
constexpr std::tuple<const char*, const char*, const char*, const char*, const char*> kActions[] = {
    {"tap in pixels", "iphone_tap", R"({"x":361.5,"y":392})", "/tap", R"({"x":0.5,"y":0.25,"fraction":true,"device":"PHONE-A"})"},
    {"tap top left", "iphone_tap", R"({"x":0,"y":0})", "/tap", R"({"x":0.0,"y":0.0,"fraction":true,"device":"PHONE-A"})"},
    {"tap in fractions", "iphone_tap", R"({"x":0.5,"y":1,"units":"fractions"})", "/tap", R"({"x":0.5,"y":1.0,"fraction":true,"device":"PHONE-A"})"},
    {"tap, numbers as text", "iphone_tap", R"({"x":" 361.5","y":"392 "})", "/tap", R"({"x":0.5,"y":0.25,"fraction":true,"device":"PHONE-A"})"},
    {"tap, phone by name", "iphone_tap", R"({"x":361.5,"y":392,"device":"anna's IPHONE"})", "/tap", R"({"x":0.5,"y":0.25,"fraction":true,"device":"PHONE-A"})"},
    {"tap, device null", "iphone_tap", R"({"x":361.5,"y":392,"device":null})", "/tap", R"({"x":0.5,"y":0.25,"fraction":true,"device":"PHONE-A"})"},
    {"long press", "iphone_long_press", R"({"x":361.5,"y":392,"seconds":"1.5"})", "/tap", R"({"x":0.5,"y":0.25,"hold":1.5,"fraction":true,"device":"PHONE-A"})"},
    {"swipe", "iphone_swipe", R"({"x1":361.5,"y1":1176,"x2":361.5,"y2":392})", "/swipe", R"({"x1":0.5,"y1":0.75,"x2":0.5,"y2":0.25,"duration":0.3,"fraction":true,"device":"PHONE-A"})"},
    {"move", "iphone_move", R"({"x":361.5,"y":392})", "/move", R"({"x":0.5,"y":0.25,"fraction":true,"device":"PHONE-A"})"},
    {"nudge", "iphone_nudge", R"({"dx":-5,"dy":"7"})", "/nudge", R"({"dx":-5,"dy":7,"click":false,"device":"PHONE-A"})"},
    {"nudge and click", "iphone_nudge", R"({"dx":0,"dy":0,"click":"true"})", "/nudge", R"({"dx":0,"dy":0,"click":true,"device":"PHONE-A"})"},
    {"type", "iphone_type", R"({"text":"Hi!\n"})", "/type", R"({"text":"Hi!\n","device":"PHONE-A"})"},
    {"key", "iphone_press_key", R"({"key":"return"})", "/key", R"({"key":"return","device":"PHONE-A"})"},
    {"key with modifiers", "iphone_press_key", R"({"key":"h","modifiers":["cmd","shift"]})", "/key", R"({"key":"h","modifiers":["cmd","shift"],"device":"PHONE-A"})"},
    {"home", "iphone_go_home", R"({})", "/home", R"({"device":"PHONE-A"})"},
    {"match", "iphone_match", R"({"force":true})", "/match", R"({"force":true,"probe":false})"},
    {"pair", "iphone_pair", R"({"host":"11111111-2222-3333-4444-555555555555","device":"PHONE-A"})", "/pair", R"({"host":"11111111-2222-3333-4444-555555555555","device":"PHONE-A"})"},
};
// clang-format on

TEST_F(Tools, ActionsAreForwarded) {
    app_.call("iphone_look");
    for (const auto& [name, tool, arguments, path, body] : kActions) {
        SCOPED_TRACE(name);
        EXPECT_THAT(app_.done(tool, Json::parse(arguments)), HasSubstr("PHONE-A"));
        const auto asked = engine_.requests(path).back();
        EXPECT_EQ(asked.method, "POST");
        EXPECT_EQ(asked.body, Json::parse(body));
    }
    EXPECT_EQ(engine_.requests("/home").size(), 1U) << "each is sent once";
}

// A call that never reaches the engine, and what the assistant is told.
// clang-format off
constexpr std::tuple<const char*, const char*, const char*, const char*> kRefusals[] = {
    {"right of the picture", "iphone_tap", R"({"x":723,"y":10})", R"(outside the picture, which is 723 x 1568 pixels: "x" goes from 0 to 722)"},
    {"below the picture", "iphone_tap", R"({"x":10,"y":1568})", R"("y" from 0 to 1567)"},
    {"above any picture", "iphone_tap", R"({"x":10,"y":-1})", R"("y" takes a number from 0 to 1568, not -1)"},
    {"end of a swipe outside", "iphone_swipe", R"({"x1":1,"y1":1,"x2":800,"y2":1})", R"("x2" goes from 0 to 722)"},
    {"fractions, not said so", "iphone_tap", R"({"x":0.5,"y":0.5})", "fractions"},
    {"fraction over 1", "iphone_tap", R"({"x":1.01,"y":0.5,"units":"fractions"})", "0 to 1"},
    {"unknown unit", "iphone_tap", R"({"x":1,"y":1,"units":"percent"})", R"("units" takes one of "pixels", "fractions", not "percent".)"},
    {"no y", "iphone_tap", R"({"x":1})", R"(iphone_tap needs "y")"},
    {"text that is no number", "iphone_tap", R"({"x":"12px","y":1})", R"("x" takes a number from 0 to 1568, not "12px".)"},
    {"infinity as text", "iphone_tap", R"({"x":"inf","y":1})", R"(not "inf")"},
    {"unknown parameter", "iphone_tap", R"({"x":1,"y":1,"finger":2})", R"(has no parameter "finger"; it takes x, y, units, device.)"},
    {"a parameter where none is", "iphone_get_status", R"({"all":true})", R"(it takes none)"},
    {"hold too long", "iphone_long_press", R"({"x":1,"y":1,"seconds":11})", "from 0.3 to 10, not 11"},
    {"nudge by a half", "iphone_nudge", R"({"dx":0.5,"dy":0})", "whole number"},
    {"nudge too far", "iphone_nudge", R"({"dx":0,"dy":2001})", "-2000 to 2000"},
    {"click maybe", "iphone_nudge", R"({"dx":0,"dy":0,"click":1})", "true or false"},
    {"nothing to type", "iphone_type", R"({"text":""})", "1 to 400 characters"},
    {"modifiers as text", "iphone_press_key", R"({"key":"a","modifiers":"cmd"})", "a list of"},
    {"unknown modifier", "iphone_press_key", R"({"key":"a","modifiers":["hyper"]})", "hyper"},
    {"device no text", "iphone_go_home", R"({"device":7})", R"("device" takes text)"},
    {"picture too large", "iphone_look", R"({"longest_edge":1569})", "from 200 to 1568, not 1569"},
    {"host too short", "iphone_pair", R"({"host":"abc"})", "36"},
};
// clang-format on

TEST_F(Tools, RefusalsSayWhatToDoAndSendNothing) {
    app_.call("iphone_look");
    for (const auto& [name, tool, arguments, says] : kRefusals) {
        EXPECT_THAT(app_.refused(tool, Json::parse(arguments)), HasSubstr(says)) << name;
    }
    EXPECT_EQ(engine_.requests().size(), 1U) << "the look";
}

TEST_F(Tools, TextIsCountedInCharacters) {
    std::string text;
    for (int i = 0; i < 400; ++i) text += "é";
    app_.done("iphone_type", {{"text", text}});
    app_.refused("iphone_type", {{"text", text + "e"}});
}

TEST_F(Tools, PixelsNeedAPictureOfThatPhone) {
    const Json point = {{"x", 10}, {"y", 10}};
    EXPECT_THAT(app_.refused("iphone_tap", point), HasSubstr("iphone_look"));
    app_.done("iphone_tap", {{"x", 0.5}, {"y", 0.5}, {"units", "fractions"}});
    EXPECT_FALSE(engine_.requests("/tap").at(0).body.contains("device"));

    app_.call("iphone_look");
    EXPECT_THAT(app_.refused("iphone_tap", {{"x", 10}, {"y", 10}, {"device", "Ben's iPhone"}}),
                HasSubstr("iphone_look"));
    app_.done("iphone_tap", point);
}

TEST_F(Tools, WithPicturesOfTwoPhonesAnActionMustNameOne) {
    app_.call("iphone_look");
    engine_.answerLook({{"X-Device", "PHONE-B"}, {"X-Image-Width", 100}, {"X-Image-Height", 200}});
    app_.call("iphone_look", {{"device", "PHONE-B"}});
    const auto whichOne = HasSubstr(R"(("PHONE-A", "PHONE-B"))");
    EXPECT_THAT(app_.refused("iphone_go_home"), whichOne);
    EXPECT_THAT(app_.refused("iphone_tap", {{"x", 1}, {"y", 1}}), whichOne);
    app_.done("iphone_tap", {{"x", 50}, {"y", 50}, {"device", "PHONE-B"}});
    EXPECT_EQ(engine_.requests("/tap").at(0).body,
              Json::parse(R"({"x":0.5,"y":0.25,"fraction":true,"device":"PHONE-B"})"));
}

TEST_F(Tools, AnEnginesRefusalIsPassedOnUnchanged) {
    const std::string sentence = "The owner denied this on their Mac (tap “Pay €12.50”).";
    for (const int status : {400, 403, 503}) {
        engine_.answer("/home",
                       [&](const HTTPRequest&) { return HTTPResponse::error(sentence, status); });
        EXPECT_EQ(app_.refused("iphone_go_home"), sentence);
    }
}

TEST_F(Tools, StatusAndDevicesAreTheEnginesOwn) {
    EXPECT_EQ(app_.done("iphone_get_status"), R"({"app":"Tandrel","paused":false})");
    EXPECT_THAT(app_.done("iphone_list_devices"), HasSubstr(R"("name":"Ben's iPhone")"));
}

TEST_F(Tools, WaitingTellsWhatTheScreenDid) {
    const std::pair<const char*, const char*> rows[] = {
        {R"({"settled":true,"changes":3,"waited_ms":1230,"still_ms":260})",
         "The screen changed and has been still for 0.3 s."},
        {R"({"settled":true,"changes":0,"waited_ms":900,"still_ms":900})",
         "The screen has not changed for 0.9 s."},
        {R"({"settled":false,"changes":90,"waited_ms":5000,"still_ms":10})",
         "still changing after 5.0 s"}};
    for (const auto& [reply, says] : rows) {
        engine_.answer("/settle", Json::parse(reply));
        EXPECT_THAT(app_.done("iphone_wait_until_settled", {{"longest", 2}}), HasSubstr(says));
    }
    const auto query = engine_.requests("/settle").at(0).query;
    EXPECT_EQ(query.at("max"), "2000");
    EXPECT_EQ(query.at("quiet"), "250");
}

TEST_F(Tools, WaitingCountsFromTheLastAction) {
    const double before = millisecondsNow();
    app_.call("iphone_go_home");
    const double after = millisecondsNow();
    engine_.answer("/settle", Json{{"settled", true}, {"changes", 1}, {"still_ms", 400}});
    EXPECT_EQ(app_.done("iphone_wait_until_settled", {{"longest", 1}}),
              "The screen changed after your last action and has been still for 0.4 s.");
    const auto query = engine_.requests("/settle").at(0).query;
    const double since = std::stod(query.at("since"));
    EXPECT_GE(since, std::floor(before));
    EXPECT_LE(since, std::ceil(after));
    EXPECT_GE(std::stod(query.at("max")) + since, before + 999);

    engine_.answer("/home", [](const HTTPRequest&) { return HTTPResponse::error("no", 403); });
    app_.call("iphone_go_home");
    app_.call("iphone_wait_until_settled");
    EXPECT_EQ(std::stod(engine_.requests("/settle").at(1).query.at("since")), since);
}

// What every app may rely on, whatever the tool.
TEST_F(Tools, AreFullyDescribedAndOnlyLookingIsReadOnly) {
    app_.send(request(1, "tools/list"));
    const Json list = app_.receive().at("result").at("tools");
    EXPECT_EQ(list.size(), 15U);
    std::vector<std::string> readOnly;
    std::vector<std::string> reachingOut;
    for (const Json& tool : list) {
        SCOPED_TRACE(tool.at("name"));
        EXPECT_THAT(tool.at("name").get<std::string>(), testing::MatchesRegex("iphone_[a-z_]+"));
        // Apps cut longer descriptions.
        EXPECT_LE(tool.at("description").get<std::string>().size(), 2048U);
        EXPECT_FALSE(tool.contains("outputSchema"));
        const Json& hints = tool.at("annotations");
        EXPECT_TRUE(hints.at("idempotentHint").is_boolean());
        EXPECT_EQ(hints.at("openWorldHint"), hints.at("destructiveHint"));
        if (hints.at("readOnlyHint") == true) readOnly.push_back(tool["name"]);
        if (hints.at("openWorldHint") == true) reachingOut.push_back(tool["name"]);
        const Json& schema = tool.at("inputSchema");
        EXPECT_EQ(schema.at("type"), "object");
        EXPECT_EQ(schema.at("additionalProperties"), false);
        for (const auto& [name, property] : schema.at("properties").items()) {
            EXPECT_TRUE(property.contains("type") && property.contains("description")) << name;
        }
    }
    EXPECT_THAT(readOnly, testing::ElementsAre("iphone_look", "iphone_take_screenshot",
                                               "iphone_wait_until_settled", "iphone_get_status",
                                               "iphone_list_devices"));
    EXPECT_THAT(reachingOut,
                testing::ElementsAre("iphone_tap", "iphone_long_press", "iphone_swipe",
                                     "iphone_nudge", "iphone_type", "iphone_press_key"));
}

}  // namespace
}  // namespace tandrel
