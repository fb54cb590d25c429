#include <algorithm>
#include <future>
#include <thread>

#include <gtest/gtest.h>

#include "engine/running_engine.h"
#include "image/image_reader.h"

namespace tandrel {
namespace {

class Api : public testing::Test {
 protected:
    RunningEngine engine;
};

TEST_F(Api, StatusTellsWhatThereIs) {
    engine.awaitMatched();
    const Json status = engine.get("/status").json();
    const Json expected = Json::parse(R"({"app":"Tandrel","paused":false,"paymentGuard":true,
        "bluetooth":"1 connected, advertising as Tandrel","hostInput":true,
        "hosts":["7B1E64A0-5D0C-4C0B-9E5A-0A1B2C3D4E01"],"unmatchedHosts":[]})");
    for (const auto& [name, value] : expected.items()) EXPECT_EQ(status.at(name), value) << name;
    EXPECT_FALSE(status.contains("asking"));
    const Json device = status["devices"][0];
    EXPECT_EQ(device["id"], "VIRTUAL-0001");
    EXPECT_EQ(device["width"], 1206);
    EXPECT_EQ(device["height"], 2622);
    EXPECT_EQ(engine.get("/").json()["app"], "Tandrel");
}

TEST_F(Api, LookReadsTheScreenInTheDeliveredPicturesPixels) {
    const Json look = engine.get("/look?maxEdge=900").json();
    EXPECT_EQ(look["mimeType"], "image/png");
    EXPECT_EQ(look["X-Image-Width"], 414);
    EXPECT_EQ(look["X-Screen-Height"], 2622);
    const auto line = std::ranges::find_if(
        look["lines"], [](const Json& one) { return one["text"] == "Settings"; });
    ASSERT_NE(line, look["lines"].end()) << look["ocr"];
    EXPECT_NEAR((*line)["x"].get<double>() + (*line)["w"].get<double>() / 2, 255, 4);
    EXPECT_NEAR((*line)["y"].get<double>() + (*line)["h"].get<double>() / 2, 265, 4);
    EXPECT_EQ(engine.get("/status").json()["screenState"], "awake");
}

TEST_F(Api, ActionsReachThePhone) {
    EXPECT_EQ(engine.post("/tap", settingsIcon()).json(),
              Json({{"ok", true}, {"device", "VIRTUAL-0001"}}));
    EXPECT_TRUE(engine.awaitPage("settings"));
    engine.post("/home", Json::object());
    EXPECT_TRUE(engine.awaitPage("home"));
    engine.post("/tap", {{"x", 743}, {"y", 637}});  // the same icon in pixels
    EXPECT_TRUE(engine.awaitPage("settings"));
    engine.post("/key", {{"key", "h"}, {"modifiers", {"cmd"}}});
    EXPECT_TRUE(engine.awaitPage("home"));
    engine.post("/key", {{"key", "space"}, {"modifiers", {"cmd"}}});
    engine.post("/type", {{"text", "Notes"}});
    EXPECT_TRUE(engine.phone().awaitRecord(
        [](const VirtualPhoneRecord& record) { return record.query == "Notes"; }));
    engine.post("/key", {{"key", "Return"}});
    EXPECT_TRUE(engine.awaitPage("notes"));
    engine.post("/type", {{"text", "Hi, \"Tandrel\"!"}});
    EXPECT_TRUE(engine.phone().awaitRecord([](const VirtualPhoneRecord& record) {
        const auto note = record.fields.find("Note");
        return note != record.fields.end() && note->second.ends_with("Hi, \"Tandrel\"!");
    }));
    engine.phone().showPage("news");
    engine.post("/swipe", {{"x1", 0.5}, {"y1", 0.8}, {"x2", 0.5}, {"y2", 0.3}, {"fraction", true}});
    EXPECT_TRUE(engine.phone().awaitRecord(
        [](const VirtualPhoneRecord& record) { return record.scroll > 100; }));
}

TEST_F(Api, RefusesWhatIsNotRightAndSendsNothing) {
    const std::tuple<const char*, const char*, int, const char*> rows[] = {
        {"/tap", "{}", 400, "x and y are required"},
        {"/tap", R"({"x":"10","y":5})", 400, "x and y are required"},
        {"/tap", R"([1,2])", 400, "x and y are required"},
        {"/tap", R"({"x":1e999,"y":5})", 400, "x and y are required"},
        {"/tap", R"({"x":0.5,"y":0.5,"fraction":true,"hold":61})", 400,
         "hold must be between 0 and 60 seconds"},
        {"/tap", R"({"x":1,"y":1,"device":"Other"})", 400,
         "no phone matches \"Other\". Phones: Virtual iPhone (VIRTUAL-0001)"},
        {"/swipe", R"({"x1":0,"y1":0,"x2":1})", 400, "x2 and y2 are required"},
        {"/swipe", R"({"x1":0,"y1":0,"x2":1,"y2":1,"duration":-1})", 400,
         "duration must be between 0 and 60 seconds"},
        {"/nudge", R"({"dx":1e9})", 400, "dx is too far"},
        {"/nudge", R"({"dx":"3"})", 400, "dx must be a number"},
        {"/type", R"({"text":7})", 400, "text is required"},
        {"/type", R"({"text":"caf\u00e9"})", 400, "cannot type \"é\" with a US keyboard"},
        {"/key", "{}", 400, "key is required"},
        {"/key", R"({"key":"F13"})", 400, "unknown key F13"},
        {"/key", R"({"key":"a","modifiers":"cmd"})", 400,
         "modifiers must be a list of modifier names"},
        {"/pair", R"({"host":"7B1E64A0"})", 400, "host is required (a UUID from unmatchedHosts)"},
        {"/look", "{}", 404, "not found"},
        {"/taps", "{}", 404, "not found"},
    };
    engine.awaitMatched();
    const VirtualPhoneRecord before = engine.phone().record();
    for (const auto& [path, body, status, error] : rows) {
        EXPECT_EQ(engine.refusal(path, Json::parse(body, nullptr, false), status), error)
            << path << " " << body;
    }
    const VirtualPhoneRecord after = engine.phone().record();
    EXPECT_EQ(after.touches, before.touches);
    EXPECT_EQ(after.keys, before.keys);
}

TEST_F(Api, PictureSizes) {
    const std::tuple<const char*, int, int> rows[] = {{"", 1206, 2622},
                                                      {"?maxWidth=400&maxEdge=600", 276, 600},
                                                      {"?format=jpg&maxWidth=100", 100, 217}};
    for (const auto& [query, width, height] : rows) {
        const ClientResponse reply = engine.get(std::string("/screenshot") + query);
        ASSERT_EQ(reply.status, 200) << query;
        EXPECT_EQ(reply.headers.at("x-image-width"), std::to_string(width)) << query;
        const auto image = decodeImage(reply.body);
        ASSERT_TRUE(image) << query;
        EXPECT_EQ(image->width(), width) << query;
        EXPECT_EQ(image->height(), height) << query;
    }
    for (const char* edge : {"0", "-5", "9x", "99999999999"}) {
        EXPECT_EQ(RunningEngine::errorOf(engine.get(std::string("/look?maxEdge=") + edge), 400),
                  "maxEdge must be a whole number from 1");
    }
}

TEST_F(Api, PauseStopsActionsAndNotLooking) {
    engine.awaitMatched();
    ASSERT_TRUE(engine.wiring().engine().setPaused(true));
    for (const char* path :
         {"/tap", "/swipe", "/move", "/nudge", "/type", "/key", "/home", "/match"}) {
        EXPECT_EQ(engine.refusal(path, settingsIcon(), 423),
                  "Tandrel is paused: the owner turned off control in the Tandrel menu (menu bar › "
                  "Resume control)")
            << path;
    }
    EXPECT_EQ(engine.get("/screenshot?maxEdge=100").status, 200);
    EXPECT_EQ(engine.get("/status").json()["paused"], true);
    ASSERT_TRUE(engine.wiring().engine().setPaused(false));
    EXPECT_EQ(engine.post("/home", Json::object()).status, 200);
}

TEST_F(Api, SettleFollowsTheScreen) {
    const Json still = engine.get("/settle?first=300").json();
    EXPECT_EQ(still["settled"], true);
    EXPECT_EQ(engine.post("/tap", settingsIcon()).status, 200);
    const Json settled =
        engine.get("/settle?max=60000&first=60000&since=" + still["since_ms"].dump()).json();
    EXPECT_EQ(settled["settled"], true);
    EXPECT_GT(settled["changes"], 0);
}

TEST_F(Api, APhoneThatIsGoneIsSaid) {
    engine.awaitMatched();
    engine.phone().disconnectBluetooth();
    while (!engine.get("/status").json()["hosts"].empty()) std::this_thread::yield();
    EXPECT_EQ(
        engine.refusal("/home", Json::object()),
        "Virtual iPhone has no Bluetooth connection: pair \"Tandrel\" in its Bluetooth settings");
    engine.phone().unplug();
    while (!engine.get("/status").json()["devices"].empty()) std::this_thread::yield();
    EXPECT_EQ(RunningEngine::errorOf(engine.get("/screenshot"), 400),
              "no iPhone screen: plug the iPhone in over USB and unlock it");
    EXPECT_EQ(engine.refusal("/home", Json::object()),
              "no iPhone connected over Bluetooth and no screen on USB: pair \"Tandrel\" in its "
              "Bluetooth settings");
}

TEST_F(Api, WithoutAScreenOnlyFractionsWork) {
    engine.phone().unplug();
    while (!engine.get("/status").json()["devices"].empty()) std::this_thread::yield();
    EXPECT_EQ(engine.refusal("/tap", {{"x", 5}, {"y", 5}}),
              "without a USB screen, x/y must be fractions (0-1) with fraction: true");
    EXPECT_EQ(engine.post("/tap", settingsIcon()).json()["device"],
              "7B1E64A0-5D0C-4C0B-9E5A-0A1B2C3D4E01");
    EXPECT_TRUE(engine.awaitPage("settings"));
    const std::string other = "00000000-0000-0000-0000-000000000000";
    EXPECT_EQ(engine.refusal("/home", {{"host", other}}), "no connected Bluetooth host " + other);
}

TEST_F(Api, MatchingWaitsForTheActionUnderWay) {
    engine.awaitMatched();
    const int movesBefore = engine.phone().record().pointerMoves;
    auto hold = std::async(std::launch::async, [&] {
        Json tap = settingsIcon();
        tap["hold"] = 1.0;
        return engine.post("/tap", tap).status;
    });
    ASSERT_TRUE(engine.phone().awaitRecord(
        [&](const VirtualPhoneRecord& record) { return record.pointerMoves > movesBefore; }));
    const Json matched = engine.post("/match", {{"force", true}, {"probe", true}}).json();
    EXPECT_EQ(matched["matched"]["VIRTUAL-0001"], "7B1E64A0-5D0C-4C0B-9E5A-0A1B2C3D4E01");
    EXPECT_EQ(hold.get(), 200);
    const VirtualPhoneRecord record = engine.phone().record();
    ASSERT_EQ(record.touches.size(), 1U);
    EXPECT_EQ(record.touches[0].kind, VirtualTouch::Kind::tap) << "the probe dragged the finger";
}

TEST(TwoPhones, AreToldApartByTheirPointersAndRemembered) {
    const std::string phones =
        RunningEngine::scenario("default.json") + ":" + RunningEngine::scenario("second.json");
    const auto home = std::make_shared<TemporaryFolder>();
    {
        RunningEngine engine(phones, home);
        engine.awaitMatched();
        EXPECT_EQ(engine.refusal("/home", Json::object()),
                  "2 phones are connected, pass device. Phones: Second iPhone (VIRTUAL-0002), "
                  "Virtual iPhone (VIRTUAL-0001)");
        EXPECT_EQ(engine.post("/home", {{"device", "second iphone"}}).status, 200);
        EXPECT_TRUE(engine.phone(1).awaitRecord(
            [](const VirtualPhoneRecord& record) { return record.homes == 1; }));
        EXPECT_EQ(engine.phone(0).record().homes, 0);
    }
    RunningEngine again(phones, home);
    const int moves = again.phone(0).record().pointerMoves;
    EXPECT_EQ(again.post("/home", {{"device", "VIRTUAL-0001"}}).status, 200);
    EXPECT_EQ(again.phone(0).record().pointerMoves, moves) << "remembered, so nothing was probed";

    // The owner's word moves a host to another screen; it then drives that one alone.
    const auto devices = [&] { return again.get("/devices").json().at("devices"); };
    const auto host = again.get("/status").json().at("hosts").at(0);
    for (const char* id : {"VIRTUAL-0001", "VIRTUAL-0002"}) {
        EXPECT_EQ(again.post("/pair", {{"host", host}, {"device", id}}).status, 200);
    }
    for (const Json& device : devices()) {
        EXPECT_EQ(device.at("bluetooth"), device.at("id") == "VIRTUAL-0002") << device;
    }
}

}  // namespace
}  // namespace tandrel
