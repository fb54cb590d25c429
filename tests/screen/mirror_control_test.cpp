#include <gmock/gmock.h>

#include "screen/mirror_fixture.h"
#include "screen/window_search.h"

namespace tandrel {
namespace {

class MirrorControl : public MirrorFixture {
 protected:
    MirrorControl() { windows.show(FakeWindows::receiver()); }  // at 10,20, 300 x 650
};

TEST_F(MirrorControl, EachToolDrivesTheFrontWindow) {
    const std::pair<MirrorArgs, const char*> rows[] = {
        {{"click", "30", "40"}, "click 40,60"},
        {{"click", "0.5", "0.5", "--fraction"}, "click 160,345"},
        {{"drag", "0", "0", "299", "649"}, "drag 10,20 309,669 0.3"},
        {{"drag", "0.5", "0.9", "0.5", "0.1", "--fraction", "--duration", "1"},
         "drag 160,605 160,85 1"},
        {{"type", "Grüße"}, "type Grüße"},
        {{"key", "return"}, "key return "},
        {{"key", "h", "--modifiers", "cmd,shift"}, "key h cmd shift"},
    };
    for (const auto& [args, deed] : rows) {
        notes.clear();
        EXPECT_EQ(run(args), 0) << err.str();
        EXPECT_THAT(notes, testing::ElementsAre("activate 7", deed));
        EXPECT_EQ(result(), Json({{"ok", true}, {"window", 7}, {"title", "Phone"}}));
    }
    notes.clear();
    EXPECT_EQ(run({"activate"}), 0);
    EXPECT_THAT(notes, testing::ElementsAre("activate 7"));
}

TEST_F(MirrorControl, NothingIsDoneWhereItWouldHitAnotherWindow) {
    const MirrorArgs rows[] = {{"click", "300", "10"},
                               {"click", "1", "650"},
                               {"click", "-1", "5"},
                               {"click", "1.0", "0.5", "--fraction"},
                               {"drag", "5", "5", "5", "1000"}};
    for (const auto& args : rows) EXPECT_EQ(failure(args), "the place lies outside the window");
    EXPECT_EQ(failure({"click", "a", "5"}), "a place is two numbers, not a 5");
    EXPECT_EQ(failure({"click", "nan", "5"}), "a place is two numbers, not nan 5");
    EXPECT_EQ(failure({"click", "1", "1", "--window", "3"}), "window 3 is gone");
    windows.close(7);
    EXPECT_EQ(failure({"click", "1", "1"}), kNoMirroringApp);
    EXPECT_THAT(notes, testing::ElementsAre());
}

TEST_F(MirrorControl, ListsAndProbesTellWhatIsThere) {
    EXPECT_EQ(run({"find"}), 0);
    EXPECT_EQ(result()["id"], 7);
    EXPECT_EQ(run({"airplay-list"}), 0);
    EXPECT_EQ(result()[0]["score"], 110);
    devices.plugIn(FakeCaptureDevices::phone("A1", "Anna"));
    EXPECT_EQ(run({"usb-list"}), 0);
    EXPECT_EQ(result(), Json::parse(R"([{"id": "A1", "name": "Anna", "model": "iOS Device"}])"));
    for (const char* probe : {"trusted", "accessibility", "screen", "camera"}) {
        EXPECT_EQ(run({probe}), 0);
        EXPECT_EQ(result(), Json({{probe, true}}));
    }
}

TEST_F(MirrorControl, ProbesTellTheTruthWhereSomethingIsMissing) {
    services.openInput = []() -> Result<std::unique_ptr<SyntheticInput>> {
        return fail("no XTEST");
    };
    windows.refuse("no display");
    permissions.cameraAnswer = Permission::denied;
    EXPECT_EQ(run({"trusted"}), 0);
    EXPECT_EQ(result(), Json({{"trusted", false}}));
    EXPECT_EQ(run({"accessibility"}), 0);
    EXPECT_EQ(result(), Json({{"accessibility", false}, {"reason", "no XTEST"}}));
    EXPECT_EQ(run({"screen"}), 0);
    EXPECT_EQ(result(), Json({{"screen", false}, {"reason", "no display"}}));
    EXPECT_EQ(run({"camera"}), 0);
    EXPECT_EQ(result()["camera"], false);
    EXPECT_EQ(failure({"find"}), "no display");
    EXPECT_EQ(failure({"click", "1", "1"}), "no display");
}

}  // namespace
}  // namespace tandrel
