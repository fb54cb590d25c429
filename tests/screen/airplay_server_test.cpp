#include "screen/airplay_server.h"

#include <gtest/gtest.h>

#include "image/image_reader.h"
#include "image/pictures.h"
#include "screen/fake_windows.h"
#include "screen/size_reader.h"
#include "screen/window_search.h"
#include "support/manual_clock.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;

class FakeReceiver final : public AirPlayReceiver {
 public:
    void start() override { ++starts; }
    void stop() override {}
    ReceiverStatus status() override { return now; }
    std::optional<bool> isOn() override { return std::nullopt; }
    int starts = 0;
    ReceiverStatus now;
};

class AirPlayServerTest : public testing::Test {
 protected:
    using Query = std::map<std::string, std::string>;

    void mirror() {
        windows.show(FakeWindows::receiver());
        windows.drawAtOpen(pictures::phoneInAWindow());
    }
    HTTPResponse ask(const std::string& path, const Query& query = {}) {
        HTTPRequest request;
        request.path = path;
        request.query = query;
        return server.handle(request);
    }
    Json json(const std::string& path, const Query& query = {}) {
        return *parseJson(toText(ask(path, query).body));
    }
    std::string errorOf(const std::string& path, const Query& query = {}) {
        return json(path, query)["error"].get<std::string>();
    }

    ManualClock clock{ManualClock::Sleep::passes};
    FakeWindows windows;
    FakeReceiver receiver;
    SizeReader reader;
    AirPlayServer server{{.windows = windows,
                          .receiver = &receiver,
                          .recognizer = reader,
                          .clock = clock,
                          .mayRecord = [] { return true; },
                          .app = "tandrel-mirror",
                          .version = "1.2"},
                         std::nullopt};
};

TEST_F(AirPlayServerTest, WithoutAWindowEachPictureRequestSaysWhatToDo) {
    for (const char* path : {"/frame.png", "/frame.jpg", "/wait", "/changes"}) {
        EXPECT_EQ(ask(path).status, 503) << path;
        EXPECT_EQ(json(path), Json({{"ok", false}, {"error", kNoMirroringWindow}}));
    }
    EXPECT_EQ(ask("/tap").status, 404);
}

TEST_F(AirPlayServerTest, StatusTellsWhatItSeesWithoutStartingACapture) {
    Json status = json("/status");
    status.erase("pid");
    EXPECT_EQ(status, Json({{"app", "tandrel-mirror"},
                            {"version", "1.2"},
                            {"permission", true},
                            {"candidates", Json::array()},
                            {"error", kNoMirroringWindow},
                            {"receiver", {{"state", "off"}, {"name", ""}}}}));
    mirror();
    status = json("/status");
    EXPECT_EQ(status["candidates"][0]["score"], 110);
    EXPECT_FALSE(status.contains("window"));
    EXPECT_EQ(windows.opened(), 0);
    ASSERT_EQ(ask("/frame.png").status, 200);
    clock.advance(1500ms);
    status = json("/status");
    EXPECT_EQ(status["window"]["id"], 7);
    EXPECT_EQ(status["frame"], Json({{"w", 800}, {"h", 1400}}));
    EXPECT_EQ(status["content"]["w"], 603);
    EXPECT_EQ(status["age_ms"], 1500);
    EXPECT_EQ(status["frames"], 1);
    EXPECT_FALSE(status.contains("error"));
    windows.hide(7, "the window is minimised");
    EXPECT_EQ(errorOf("/status"), "the window is minimised");
    EXPECT_EQ(errorOf("/frame.png"), "the window is minimised") << "no old picture";
}

TEST_F(AirPlayServerTest, FramesAreCutScaledAndEncodedAsAsked) {
    mirror();
    const auto copies = PixelBuffer::copiesMade();
    const std::tuple<const char*, Query, const char*, Size> rows[] = {
        {"/frame.png", {}, "image/png", {603, 1311}},
        {"/frame.jpg", {}, "image/jpeg", {603, 1311}},
        {"/frame.png", {{"format", "jpg"}}, "image/jpeg", {603, 1311}},
        {"/frame.jpg", {{"format", "png"}}, "image/png", {603, 1311}},
        {"/frame.png", {{"maxEdge", "900"}}, "image/png", {414, 900}},
        {"/frame.png", {{"maxEdge", "2600"}}, "image/png", {603, 1311}},
        {"/frame.png", {{"crop", "off"}}, "image/png", {800, 1400}},
        {"/frame.png", {{"crop", "0"}, {"maxEdge", "700"}}, "image/png", {400, 700}},
        {"/frame.png", {{"crop", "1"}}, "image/png", {603, 1311}},
    };
    for (const auto& [path, query, type, size] : rows) {
        const HTTPResponse reply = ask(path, query);
        EXPECT_EQ(reply.contentType, type);
        const PixelBuffer image = decodeImage(reply.body).value_or(PixelBuffer());
        EXPECT_EQ((Size{image.width(), image.height()}), size) << path;
    }
    EXPECT_EQ(PixelBuffer::copiesMade(), copies);
    EXPECT_EQ(windows.opened(), 1) << "one capture serves all requests";
    for (const char* edge : {"0", "-5", "9x", "1e3", "99999999999"}) {
        EXPECT_EQ(ask("/frame.png", {{"maxEdge", edge}}).status, 400) << edge;
    }
}

TEST_F(AirPlayServerTest, FrameWithTextIsJson) {
    mirror();
    const Json reply = json("/frame.png", {{"ocr", "1"}, {"maxEdge", "900"}});
    EXPECT_EQ(reply["ok"], true);
    EXPECT_EQ(reply["mimeType"], "image/png");
    EXPECT_EQ(reply["ocr"][0]["h"], 900) << "text is given in pixels of the picture that is sent";
    EXPECT_TRUE(reply["data"].get<std::string>().starts_with("iVBORw0KGgo"));
    reader.refuses = true;
    EXPECT_EQ(errorOf("/frame.png", {{"ocr", "1"}}), "no language data");
}

TEST_F(AirPlayServerTest, WaitsAndTellsChanges) {
    mirror();
    const Json still = json("/wait", {{"first", "40"}, {"min", "40"}});
    EXPECT_EQ(still["ok"], true);
    EXPECT_EQ(still["settled"], true);
    EXPECT_EQ(still["changes"], 0);
    EXPECT_EQ(still["waited_ms"], 45);
    clock.advance(10s);
    windows.draw(7, pictures::plain(800, 1400, {200, 200, 200}));
    const Json all = json("/changes");
    ASSERT_EQ(all["changes"].size(), 1U);
    const double time = all["changes"][0].get<double>();
    EXPECT_EQ(json("/changes", {{"since", std::to_string(time - 1)}})["changes"].size(), 1U);
    EXPECT_EQ(json("/changes", {{"since", std::to_string(time + 1e9)}})["changes"], Json::array());
}

TEST_F(AirPlayServerTest, ACaptureThatEndedIsMadeAnew) {
    mirror();
    EXPECT_EQ(ask("/frame.png").status, 200);
    windows.close(7);
    EXPECT_EQ(errorOf("/frame.png"), kNoMirroringWindow);
    windows.show(FakeWindows::receiver(8));
    EXPECT_EQ(ask("/frame.png").status, 200);
    EXPECT_EQ(json("/status")["window"]["id"], 8);
    server.reset();
    EXPECT_FALSE(server.current());
    EXPECT_EQ(ask("/frame.png").status, 200);
    EXPECT_EQ(windows.opened(), 3);
}

TEST_F(AirPlayServerTest, KeepAliveStartsTheReceiverWhereNoWindowIsTrusted) {
    server.keepAlive();
    EXPECT_EQ(receiver.starts, 1);
    WinInfo page = FakeWindows::receiver(3);
    page.owner = "Browser";
    page.title = "iPhone review";
    windows.show(page);
    server.keepAlive();
    EXPECT_EQ(receiver.starts, 2);
    EXPECT_EQ(server.current()->info().id, 3U);
    mirror();
    server.keepAlive();
    EXPECT_EQ(receiver.starts, 2);
    EXPECT_EQ(server.current()->info().id, 7U) << "the likelier window takes its place";
    server.keepAlive();
    EXPECT_EQ(windows.opened(), 2);
}

TEST_F(AirPlayServerTest, TheReceiversTroubleIsTheReason) {
    receiver.now = {ReceiverStatus::State::missing, "Desk", "uxplay is not installed"};
    EXPECT_EQ(errorOf("/frame.png"), "uxplay is not installed");
    EXPECT_EQ(json("/status")["receiver"],
              Json({{"state", "missing"}, {"name", "Desk"}, {"error", "uxplay is not installed"}}));
    receiver.now = {ReceiverStatus::State::waiting, "Desk", ""};
    constexpr const char* kNobodyMirrors =
        "no iPhone is mirroring its screen: on the iPhone open Control Center › Screen Mirroring › "
        "Desk";
    EXPECT_EQ(errorOf("/status"), kNobodyMirrors) << "not what was wrong before";
    EXPECT_EQ(errorOf("/frame.png"), kNobodyMirrors);
    windows.refuse("there is no display");
    EXPECT_EQ(errorOf("/status"), kNobodyMirrors) << "a receiver needs no display";
}

}  // namespace
}  // namespace tandrel
