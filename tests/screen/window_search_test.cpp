#include "screen/window_search.h"

#include <gmock/gmock.h>

#include "screen/fake_windows.h"
#include "support/environment_variable.h"

namespace tandrel {
namespace {

WinInfo window(std::string owner, std::string bundle, std::string title, double width,
               double height) {
    return {.id = 1,
            .owner = std::move(owner),
            .bundle = std::move(bundle),
            .title = std::move(title),
            .frame = {0, 0, width, height},
            .onScreen = true};
}

TEST(AirplayScore, IsTheSumOfWhatOwnerTitleAndPlaceSay) {
    constexpr const char* agent = "com.apple.AirPlayUIAgent";
    constexpr const char* control = "com.apple.controlcenter";
    const auto at = [](WinInfo info, int layer, bool onScreen) {
        info.layer = layer;
        info.onScreen = onScreen;
        return info;
    };
    const std::tuple<const char*, WinInfo, int> rows[] = {
        {"too narrow", window("AirPlay", agent, "iPhone", 119, 600), 0},
        {"too low", window("AirPlay", agent, "iPhone", 600, 119), 0},
        {"just large enough", window("AirPlay", agent, "", 120, 120), 140},
        {"the receiver's agent", window("x", agent, "", 400, 800), 140},
        {"the agent by its owner", window("AirPlayUIAgent", "", "", 400, 800), 140},
        {"with a telling title", window("x", agent, "Anna's iPhone", 400, 800), 160},
        {"some AirPlay program", window("An AirPlay thing", "", "", 400, 800), 110},
        {"AirPlay in the bundle", window("x", "org.airplay.y", "", 400, 800), 110},
        {"control centre", window("x", control, "", 300, 300), 120},
        {"a small control centre", window("x", control, "", 299, 300), 0},
        {"above the others", at(window("x", control, "", 300, 300), 1, true), 0},
        {"below the others", at(window("x", control, "", 300, 300), -1, true), 55},
        {"a title alone", window("Notes", "", "Mirroring notes", 400, 800), 40},
        {"a title alone, minimised", at(window("Notes", "", "iPHONE", 400, 800), 0, false), 25},
        {"nothing", window("Notes", "", "Shopping", 400, 800), 0},
    };
    for (const auto& [name, window, score] : rows) EXPECT_EQ(airplayScore(window), score) << name;
}

TEST(AirplayScore, TakesTheOwnersWord) {
    const WinInfo plain = window("VLC media player", "", "Holiday", 400, 800);
    const EnvironmentVariable owner("TANDREL_AIRPLAY_OWNER", "vlc");
    EXPECT_EQ(airplayScore(plain), 220);
    const EnvironmentVariable title("TANDREL_AIRPLAY_TITLE", "HOLI");
    EXPECT_EQ(airplayScore(plain), 420);
    const EnvironmentVariable none("TANDREL_AIRPLAY_OWNER", "");
    EXPECT_EQ(airplayScore(plain), 220);
}

TEST(AirplayScore, ATitleAloneIsNeverTrusted) {
    EXPECT_LT(airplayScore(window("Browser", "", "airplay iphone mirroring", 900, 900)),
              kTrustedScore);
    EXPECT_GE(airplayScore(window("AirPlay receiver", "", "", 900, 900)), kTrustedScore);
}

class WindowSearch : public testing::Test {
 protected:
    void add(std::uint32_t id, std::string owner, std::string title, double width = 400) {
        WinInfo info = window(std::move(owner), "", std::move(title), width, 800);
        info.id = id;
        windows.show(info);
    }
    std::uint32_t found(const char* text = "") {
        const auto window = findWindow(windows, text);
        return *window ? (*window)->id : 0;
    }

    FakeWindows windows;
};

TEST_F(WindowSearch, CandidatesComeBestFirstAndEqualOnesInOrder) {
    add(1, "Notes", "iPhone");
    add(2, "Editor", "Letter");
    add(3, "Mail", "iPhone");
    add(4, "AirPlay receiver", "");
    std::vector<std::uint32_t> ids;
    const auto candidates = airplayCandidates(windows);
    for (const WinInfo& window : *candidates) ids.push_back(window.id);
    EXPECT_THAT(ids, testing::ElementsAre(4, 1, 3));
}

TEST_F(WindowSearch, PicksTheNamedWindowElseTheBestOne) {
    add(1, "Notes", "Letter");
    EXPECT_EQ(pickWindow(windows, std::nullopt).error().message, kNoMirroringWindow);
    add(2, "AirPlay receiver", "");
    EXPECT_EQ(pickWindow(windows, std::nullopt)->id, 2U);
    EXPECT_EQ(pickWindow(windows, 1)->id, 1U);
    EXPECT_EQ(pickWindow(windows, 3).error().message, "window 3 is gone");
    windows.refuse("no display");
    EXPECT_EQ(pickWindow(windows, 1).error().message, "no display");
}

TEST_F(WindowSearch, FindsMirroringProgramsThenReceiversThenTheText) {
    EXPECT_EQ(found(), 0U);
    add(1, "VLC", "Holiday");
    EXPECT_EQ(found(), 0U);
    EXPECT_EQ(found("holi"), 1U);
    add(2, "AirPlay receiver", "");
    EXPECT_EQ(found("holi"), 2U);
    add(3, "iPhone Mirroring", "");
    add(4, "iPhone Mirroring", "", 500);
    add(5, "iPhone Mirroring", "", 300);
    EXPECT_EQ(found(), 4U) << "the largest";
}

}  // namespace
}  // namespace tandrel
