#include "engine/engine.h"

#include <thread>

#include <gtest/gtest.h>

#include "base/file.h"
#include "engine/running_engine.h"
#include "screen/window_search.h"

namespace tandrel {
namespace {

TEST(Engine, TellsHelpersItsPortAndTakesThatBack) {
    const auto home = std::make_shared<TemporaryFolder>();
    const auto file = home->path() / ".local/state/tandrel/engine.json";
    {
        RunningEngine engine(RunningEngine::kDefaultPhone, home);
        const Json state = *parseJson(*readFile(file, 10'000));
        EXPECT_EQ("http://127.0.0.1:" + state["port"].dump(), engine.wiring().engine().ownURL());
    }
    EXPECT_FALSE(std::filesystem::exists(file));
}

TEST(Engine, FreesBothPortsWhenItStops) {
    RunningEngine engine;
    Engine& running = engine.wiring().engine();
    const auto portOf = [](const std::string& url) { return LoopbackUrl::parse(url)->port; };
    const std::uint16_t ports[] = {portOf(running.ownURL()), portOf(running.ownAirplayURL())};
    running.stop();
    for (const std::uint16_t port : ports) {
        HTTPServer again(port, [](const HTTPRequest&) { return HTTPResponse(); });
        EXPECT_TRUE(again.start()) << port;
    }
}

TEST(Engine, LettingGoEndsADragAndLaterActionsWork) {
    RunningEngine engine;
    engine.awaitMatched();
    const int before = engine.phone().record().pointerMoves;
    ClientResponse drag;
    {
        const std::jthread dragging([&] {
            drag = engine.post("/swipe", {{"x1", 0.5},
                                          {"y1", 0.6},
                                          {"x2", 0.5},
                                          {"y2", 0.7},
                                          {"duration", 60},
                                          {"fraction", true}});
        });
        constexpr int kWellOnItsWay = 10;
        EXPECT_TRUE(engine.phone().awaitRecord([&](const VirtualPhoneRecord& record) {
            return record.pointerMoves > before + kWellOnItsWay;
        }));
        EXPECT_TRUE(engine.phone().record().touches.empty()) << "the button is down";
        engine.wiring().engine().letGo();
    }
    EXPECT_EQ(drag.status, 503);
    EXPECT_TRUE(engine.phone().awaitRecord(
        [](const VirtualPhoneRecord& record) { return record.touches.size() == 1; }));
    EXPECT_EQ(engine.post("/home", Json::object()).status, 200);
}

TEST(Engine, AirplayPortSaysThatThereIsNoPicture) {
    RunningEngine engine;
    engine.phone().stopMirroring();
    const LoopbackUrl port = *LoopbackUrl::parse(engine.wiring().engine().ownAirplayURL());
    EXPECT_EQ(httpGet(port, "/status")->json()["app"], "Tandrel");
    EXPECT_EQ(httpGet(port, "/quit")->json(), Json({{"ok", true}}));
    const auto frame = httpGet(port, "/frame.png");
    EXPECT_EQ(frame->status, 503);
    EXPECT_EQ(frame->json(), Json({{"ok", false}, {"error", kNoMirroringWindow}}));
}

}  // namespace
}  // namespace tandrel
