#include <gmock/gmock.h>

#include "base/file.h"
#include "engine/running_engine.h"

// The engine with phones that are seen only because they mirror their screens.
namespace tandrel {
namespace {

// The default phone, and a second one, without a cable.
std::string unplugged(const TemporaryFolder& folder, const std::string& file,
                      const Json& changes = Json::object()) {
    Json scenario = *parseJson(*readFile(RunningEngine::scenario(file), 1'000'000));
    scenario["phone"]["plugged"] = false;
    scenario["phone"].update(changes);
    const auto path = folder.path() / file;
    EXPECT_TRUE(replaceFile(path, dumpJson(scenario)));
    return path.string();
}

std::shared_ptr<TemporaryFolder> homeWithAirplay() {
    auto home = std::make_shared<TemporaryFolder>();
    EXPECT_TRUE(
        replaceFile(home->path() / ".config/tandrel/settings.json", R"({"link": "airplay"})"));
    return home;
}

class Mirrored : public testing::Test {
 protected:
    ClientResponse airplay(const std::string& target) {
        return httpGet(*LoopbackUrl::parse(engine.wiring().engine().ownAirplayURL()), target)
            .value();
    }

    TemporaryFolder folder;
    RunningEngine engine{unplugged(folder, "default.json"), homeWithAirplay()};
};

TEST_F(Mirrored, ThePictureIsThePhonesScreen) {
    const Json device = engine.get("/devices").json()["devices"][0];
    EXPECT_EQ(device["id"], "airplay-1");
    EXPECT_EQ(device["bluetooth"], true) << "there is but one host, so it is this phone's";
    const Json look = engine.get("/look?maxEdge=900").json();
    EXPECT_EQ(look["X-Image-Height"], 900);
    EXPECT_THAT(look["ocr"].dump(), testing::HasSubstr("Settings"));
    EXPECT_EQ(engine.get("/screenshot?maxEdge=100").status, 200);
    EXPECT_EQ(engine.get("/status").json()["airplay"]["window"], "Virtual iPhone");
}

TEST_F(Mirrored, TheGuardReadsTheMirroredPicture) {
    engine.phone().showPage("lamp");
    const auto price = engine.phone().find("Buy now").value();
    const auto reply = engine.post("/tap", {{"x", price.x}, {"y", price.y}, {"fraction", true}});
    EXPECT_EQ(reply.status, 403) << toText(reply.body);
    EXPECT_EQ(engine.phone().record().touches.size(), 0U);
}

TEST_F(Mirrored, EachAppearanceIsAnotherScreen) {
    engine.phone().stopMirroring();
    while (!engine.get("/devices").json()["devices"].empty()) std::this_thread::yield();
    EXPECT_EQ(RunningEngine::errorOf(engine.get("/screenshot"), 400),
              "no iPhone screen: plug the iPhone in over USB and unlock it");
    engine.phone().startMirroring();
    EXPECT_EQ(airplay("/frame.png?maxEdge=90").status, 200);
    while (engine.get("/devices").json()["devices"].empty()) std::this_thread::yield();
    EXPECT_EQ(engine.get("/devices").json()["devices"][0]["id"], "airplay-2");
}

TEST_F(Mirrored, ACableTakesThePicturesPlace) {
    engine.phone().plug();
    const auto idOf = [&] { return engine.get("/devices").json()["devices"][0]["id"]; };
    while (idOf() != "VIRTUAL-0001") std::this_thread::yield();
    engine.post("/match", Json::object());
    EXPECT_EQ(engine.get("/devices").json()["devices"].size(), 1U);
    EXPECT_EQ(engine.post("/tap", settingsIcon()).json()["device"], "VIRTUAL-0001");
}

TEST_F(Mirrored, QuitStartsAFreshCapture) {
    EXPECT_EQ(airplay("/quit").json(), Json({{"ok", true}}));
    EXPECT_EQ(airplay("/frame.png?maxEdge=90").status, 200);
    EXPECT_EQ(airplay("/status").json()["app"], "Tandrel");
    EXPECT_GE(airplay("/status").json()["frames"], 1);
}

// Two phones, one of which mirrors.
std::string oneOfTwo(const TemporaryFolder& folder, bool seesPointer) {
    return unplugged(folder, "default.json", {{"assistiveTouch", seesPointer}}) + ":" +
           unplugged(folder, "second.json", {{"mirroring", false}});
}

TEST(OneOfTwoMirrors, ItsHostIsFoundByThePointer) {
    const TemporaryFolder folder;
    RunningEngine engine(oneOfTwo(folder, true), homeWithAirplay());
    EXPECT_EQ(engine.post("/tap", settingsIcon()).json()["device"], "airplay-1");
    EXPECT_EQ(engine.get("/devices").json()["devices"][0]["bluetooth"], true);
    EXPECT_TRUE(engine.awaitPage("settings"));
    EXPECT_EQ(engine.phone(1).record().touches.size(), 0U);
    EXPECT_FALSE(std::filesystem::exists(engine.wiring().files().pairings))
        << "whose a picture was says nothing about the next one";
}

TEST(OneOfTwoMirrors, ActionsAreRefusedUntilItIsKnownWhoseItIs) {
    const TemporaryFolder folder;
    RunningEngine engine(oneOfTwo(folder, false), homeWithAirplay());
    EXPECT_EQ(engine.refusal("/tap", settingsIcon()),
              "2 Bluetooth hosts are connected and no screen is on USB, pass host (one of /status "
              "hosts)");
    for (int i = 0; i < 2; ++i) EXPECT_EQ(engine.phone(i).record().touches.size(), 0U);
    const char* host = "7B1E64A0-5D0C-4C0B-9E5A-0A1B2C3D4E01";
    Json named = settingsIcon();
    named["host"] = host;
    EXPECT_EQ(engine.post("/move", named).json()["device"], host);
}

}  // namespace
}  // namespace tandrel
