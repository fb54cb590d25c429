#include <thread>

#include <gmock/gmock.h>

#include "app/running_program.h"
#include "app/x_display.h"
#include "base/file.h"
#include "base/json.h"
#include "http/socket.h"
#include "image/image_reader.h"
#include "platform/linux/fake_portal.h"
#include "platform/linux/private_bus.h"
#include "platform/linux/x_desktop.h"
#include "platform/linux/x_image.h"
#include "screen/phone_screen.h"
#include "support/eventually.h"

namespace tandrel {
namespace {

using Key = XDisplay::Key;
using namespace std::chrono_literals;

constexpr const char* kSetup = "Tandrel Setup";

// The application on a display of its own that has no tray, with the virtual phone.
class OwnersWindows : public testing::Test {
 protected:
    void SetUp() override { open(XDesktop::Manager::none); }

    void open(XDesktop::Manager manager) {
        desktop = XDesktop::open(manager, "1280x1000");
        if (!desktop) GTEST_SKIP() << "Xvfb or openbox is not installed";
        display.emplace(desktop->x());
        environment = {{"DISPLAY", desktop->name()}, {"TANDREL_VIRTUAL_PHONE", "1"}};
    }

    void start() {
        program = std::make_unique<RunningProgram>(environment, std::vector<std::string>{}, home);
        program->awaitMatched();
    }

    void keepSetting(const std::string& json) {
        std::filesystem::create_directories(settingsFile().parent_path());
        ASSERT_TRUE(replaceFile(settingsFile(), json));
    }
    std::filesystem::path settingsFile() const {
        return home->path() / ".config/tandrel/settings.json";
    }
    Json setting(const std::string& key) const {
        const auto text = readFile(settingsFile(), 1 << 20);
        const auto json = text ? parseJson(*text) : Result<Json>(Json::object());
        return json && json->contains(key) ? (*json)[key] : Json();
    }

    // Waits until there is such a window, at most as long as a slow machine needs.
    XDisplay::Window await(const std::string& title) {
        std::optional<XDisplay::Window> window;
        EXPECT_TRUE(waitUntil([&] { return (window = display->find(title)).has_value(); }))
            << title;
        if (window) display->focus(*window);
        return window.value_or(XDisplay::Window{});
    }
    bool awaitGone(const std::string& title) {
        return waitUntil([&] { return !display->find(title); });
    }
    static bool waitUntil(const std::function<bool()>& holds, Duration most = 60s) {
        return eventually(holds, most);
    }

    // The button that goes on, at the lower right.
    void clickNext(const XDisplay::Window& setup) {
        display->click(setup.x + setup.width - 60, setup.y + setup.height - 38);
    }
    // Opens the menu at the lower left, where it is once no tray has been found, and walks down to
    // the entry of that number; those that cannot be chosen do not count.
    enum Entry { pause = 1, askBeforePayments = 2 };
    void chooseFromMenu(const XDisplay::Window& setup, Entry entry) {
        ASSERT_TRUE(waitUntil([&] {
            display->click(setup.x + 60, setup.y + setup.height - 32);
            return waitUntil([this] { return display->hasPopup(); }, 2s);
        }));
        for (int i = 0; i < entry; ++i) display->press(Key::down);
        display->press(Key::enter);
        ASSERT_TRUE(waitUntil([this] { return !display->hasPopup(); }));
    }

    // The same until the setting follows: a key that comes before the menu has the keyboard is
    // lost.
    bool chooseUntil(const XDisplay::Window& setup, Entry entry, const char* name, bool value) {
        for (int tries = 0; tries < 3; ++tries) {
            chooseFromMenu(setup, entry);
            if (waitUntil([&] { return setting(name) == Json(value); }, 10s)) return true;
        }
        return false;
    }

    std::unique_ptr<XDesktop> desktop;
    std::optional<XDisplay> display;
    ChildProgram::Environment environment;
    const std::shared_ptr<TemporaryFolder> home = std::make_shared<TemporaryFolder>();
    std::unique_ptr<RunningProgram> program;
};

TEST_F(OwnersWindows, SetupLeadsToItsEndAndIsRememberedAsDone) {
    start();
    const XDisplay::Window setup = await(kSetup);
    EXPECT_EQ(setting("setupDone"), Json());
    ASSERT_TRUE(waitUntil([&] {
        clickNext(setup);
        return setting("setupDone") == Json(true);
    }));
    EXPECT_TRUE(awaitGone(kSetup));
    EXPECT_EQ(program->get("/status").status, 200) << "closing the window ends nothing";
}

// A tray's bar along the top edge, in which the only icon is the first from the left.
class InATray : public OwnersWindows {
 protected:
    static constexpr const char* kTrayer = "/usr/bin/trayer";
    static constexpr int kBar = 28;  // pixels high; the icon is a square of it

    void SetUp() override {
        if (!std::filesystem::exists(kTrayer)) GTEST_SKIP() << "trayer is not installed";
        open(XDesktop::Manager::openbox);  // it keeps windows off the tray
        if (IsSkipped()) return;
        tray = std::make_unique<ChildProgram>(
            std::vector<std::string>{kTrayer, "--edge", "top", "--align", "left", "--widthtype",
                                     "pixel", "--width", "300", "--heighttype", "pixel", "--height",
                                     std::to_string(kBar)},
            ChildProgram::Environment{{"DISPLAY", desktop->name()}});
    }
    // Waits until a good part of the icon's place has this colour.
    bool awaitIcon(int color) {
        constexpr int kGoodPart = kBar * kBar / 6;
        XImageSource screen(desktop->x());
        return waitUntil([&] {
            const PixelBuffer bar = screen.fetch(desktop->x().root(), kBar, kBar);
            int found = 0;
            for (int i = 0; bar && i < kBar * kBar; ++i) {
                const std::uint8_t* p = bar.row(i / kBar) + 4 * (i % kBar);
                found += (p[0] | p[1] << 8 | p[2] << 16) == color;
            }
            return found > kGoodPart;
        });
    }

    static constexpr int kSetupColor = 0x3f5f8a;
    static constexpr int kReady = 0x0a5bd3;
    static constexpr int kAttention = 0xb3420e;
    static constexpr int kPaused = 0x55555a;

    std::unique_ptr<ChildProgram> tray;
};

TEST_F(InATray, TheIconShowsTheStateAndOpensTheMenuAndNoWindowComes) {
    keepSetting(R"({"setupDone": true})");
    start();
    EXPECT_TRUE(awaitIcon(kReady));
    keepSetting(R"({"setupDone": true, "paused": true})");
    EXPECT_TRUE(awaitIcon(kPaused));
    EXPECT_FALSE(display->find(kSetup)) << "the menu is in the tray";
    display->click(kBar / 2, kBar / 2);
    EXPECT_TRUE(waitUntil([this] { return display->hasPopup(); }));
}

TEST_F(InATray, WithoutAPhoneTheIconTellsSetupFromTrouble) {
    environment["TANDREL_VIRTUAL_PHONE"] = "";
    program = std::make_unique<RunningProgram>(environment, std::vector<std::string>{}, home);
    EXPECT_TRUE(awaitIcon(kSetupColor));
    keepSetting(R"({"setupDone": true})");
    EXPECT_TRUE(awaitIcon(kAttention));
}

TEST_F(OwnersWindows, AreDrawnIntoTheFolderThatIsAskedFor) {
    const PrivateBus bus;
    const FakePortal darkDesktop(bus.address(), [] { return FakePortal::wrapped(1); });
    environment["DBUS_SESSION_BUS_ADDRESS"] = bus.address();
    const auto folder = home->path() / "pictures/today";
    environment["TANDREL_SNAPSHOT_DIR"] = folder.string();
    start();
    await(kSetup);
    EXPECT_TRUE(waitUntil([&] { return readImage(folder / "tray-icons.png").has_value(); }))
        << "the last";
    const auto menu = readImage(folder / "menu-ready.png").value();
    EXPECT_LT(meanLuma(menu), 0.4) << "the desktop prefers dark windows";
    EXPECT_EQ(program->get("/status").status, 200);
}

TEST_F(OwnersWindows, ASecondStartOpensTheWindowOfTheFirst) {
    environment["TANDREL_ENGINE_PORT"] = std::to_string(boundPort(*listenOnLoopback(0)));
    start();
    display->close(await(kSetup));
    ASSERT_TRUE(awaitGone(kSetup));
    const auto second = runApp({}, home->path(), environment);
    EXPECT_EQ(second.status, 0);
    EXPECT_THAT(second.output,
                testing::HasSubstr("Tandrel is already running; its window has been opened."));
    await(kSetup);
}

TEST_F(OwnersWindows, OpenWithoutATrayAfterSetupAndTheMenuPausesAndResumesControl) {
    keepSetting(R"({"setupDone": true})");
    start();
    const XDisplay::Window setup = await(kSetup);
    EXPECT_TRUE(chooseUntil(setup, pause, "paused", true));
    EXPECT_EQ(program->post("/home", Json::object()).status, 423);
    EXPECT_TRUE(chooseUntil(setup, pause, "paused", false));
}

TEST_F(OwnersWindows, QuestionsBeforePaymentsStopOnlyOnASecondYes) {
    start();
    const XDisplay::Window setup = await(kSetup);
    for (const Key answer : {Key::escape, Key::enter}) {
        chooseFromMenu(setup, askBeforePayments);
        await("Tandrel");
        display->press(answer);
        ASSERT_TRUE(awaitGone("Tandrel"));
        EXPECT_EQ(setting("askBeforePayments"), Json()) << "neither key says yes";
    }
    chooseFromMenu(setup, askBeforePayments);
    await("Tandrel");
    display->press(Key::tab);
    display->press(Key::space);
    EXPECT_TRUE(waitUntil([this] { return setting("askBeforePayments") == Json(false); }));
}

}  // namespace
}  // namespace tandrel
