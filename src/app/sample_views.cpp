#include "app/sample_views.h"

#include <functional>

#include "app/owner_text.h"
#include "app/phone_test.h"
#include "app/qt_text.h"

namespace tandrel::samples {
namespace {

constexpr const char* kHelper = "/home/hana/.local/opt/Tandrel/bin/tandrel";

AppModelInputs inputsInOrder() {
    AppModelInputs in;
    in.mode.kind = EngineMode::Kind::own;
    in.engineUp = in.setupDone = in.bluetoothReady = in.screenReady = in.phoneConnected = true;
    in.lastHealthyKnown = true;
    in.bluetoothPerm = Permission::granted;
    in.bluetoothState = "advertising";
    in.usbPhone = in.usbPlugged = in.anyBluetoothHost = true;
    in.screenSource = ScreenSource::usb;
    in.screenState = PhoneScreen::awake;
    in.advertisedName = "Tandrel";
    in.macName = "study-pc";
    return in;
}

std::vector<AIAppStatus> apps(Link code, Link desktop) {
    const std::string helper = kHelper;
    return {{.app = AIApp::claudeCode,
             .installed = true,
             .link = code,
             .toPaste = "claude mcp add -s user tandrel -- " + helper + " mcp"},
            {.app = AIApp::claudeDesktop,
             .installed = true,
             .link = desktop,
             .toPaste = "\"tandrel\": { \"command\": \"" + helper + "\", \"args\": [\"mcp\"] }"},
            {.app = AIApp::codex,
             .installed = false,
             .link = Link::notAdded,
             .toPaste = "[mcp_servers.tandrel]\ncommand = \"" + helper + "\"\nargs = [\"mcp\"]"}};
}

TestView::Line line(const char* title, Mark mark, const char* detail = "") {
    const auto said = [](const char* text) {
        return *text == 0 ? QString() : qtText(ownerText("PhoneTest", text));
    };
    return {said(title), mark, said(detail)};
}

}  // namespace

SetupView ready(const QImage& picture) {
    SetupView view;
    view.app.inputs = inputsInOrder();
    view.app.phones = {{.id = "1", .name = "Hana's iPhone", .bluetooth = true, .picture = true}};
    view.app.phoneWasSetUp = view.app.assistiveTouchOn = true;
    view.app.testPassed = true;
    view.app.aiApps = apps(Link::addedHere, Link::addedElsewhere);
    view.test = passedTest();
    view.picture = picture;
    return view;
}

SetupView appLost(const QImage& picture) {
    SetupView view = ready(picture);
    AIAppStatus& codex = view.app.aiApps.back();
    codex.installed = codex.lost = true;
    view.app.liesInPassing = true;
    return view;
}

SetupView fresh() {
    SetupView view;
    view.app.inputs = inputsInOrder();
    AppModelInputs& in = view.app.inputs;
    in.setupDone = in.bluetoothReady = in.screenReady = in.phoneConnected = false;
    in.lastHealthyKnown = in.usbPhone = in.usbPlugged = in.anyBluetoothHost = false;
    in.bluetoothState = "Bluetooth off";
    in.screenSource = ScreenSource::none;
    in.screenState = PhoneScreen::unknown;
    view.app.aiApps = apps(Link::notAdded, Link::notAdded);
    return view;
}

std::vector<Named> notices() {
    struct Change {
        const char* name;
        void (*make)(AppModelInputs& in);
    };
    const Change changes[] = {
        {"failed",
         [](auto& in) { in.mode = {EngineMode::Kind::failed, "Port 7390 is taken by nginx"}; }},
        {"other-program", [](auto& in) { in.mode = {EngineMode::Kind::external, "Tandrel 1.0"}; }},
        {"starting", [](auto& in) { in.engineUp = false; }},
        {"bluetooth-denied", [](auto& in) { in.bluetoothPerm = Permission::denied; }},
        {"bluetooth-off", [](auto& in) { in.bluetoothState = "Bluetooth off"; }},
        {"not-sharing",
         [](auto& in) {
             in.usbPhone = false;
             in.screenSource = ScreenSource::none;
         }},
        {"unplugged",
         [](auto& in) {
             in.usbPhone = in.usbPlugged = false;
             in.screenSource = ScreenSource::none;
         }},
        {"not-mirrored",
         [](auto& in) {
             in.linkChoice = LinkChoice::airplay;
             in.screenSource = ScreenSource::none;
         }},
        {"screen-off", [](auto& in) { in.screenState = PhoneScreen::off; }},
        {"locked", [](auto& in) { in.screenState = PhoneScreen::locked; }},
        {"matching", [](auto& in) { in.phoneConnected = false; }},
        {"not-connected", [](auto& in) { in.phoneConnected = in.anyBluetoothHost = false; }},
    };
    std::vector<Named> result;
    for (const Change& change : changes) {
        result.push_back({change.name, inputsInOrder()});
        change.make(result.back().inputs);
    }
    return result;
}

Approvals approvals() {
    const char* reason = "\"€12.50\" is nothing but a price";
    return {
        .newest = {{"2026-02-03T08:14:07Z", "asked", "tap “€12.50”: €12.50", reason},
                   {"2026-02-03T08:14:15Z", "approved", "tap “€12.50”: €12.50", {}},
                   {"2026-02-03T17:40:31Z", "asked", "press Return: €25.00 to Ilse Varga",
                    "Return on a payment screen"},
                   {"2026-02-03T17:41:21Z", "timed out", "press Return: €25.00 to Ilse Varga", {}},
                   {"2026-02-04T09:02:55Z", "asked", "tap “Subscribe”: €9.99", {}},
                   {"2026-02-04T09:03:02Z", "denied", "tap “Subscribe”: €9.99", {}},
                   {"2026-02-04T09:03:40Z",
                    "refused",
                    "tap “Subscribe”: €9.99: denied less than two minutes ago",
                    {}}},
        .older = 0,
        .unreadable = 1};
}

TestView passedTest() {
    const std::string seen = filledIn(ownerText("PhoneTest", "%1. It can read: %2"),
                                      {ownerText("PhoneTest", "USB cable"), "9:41, Shop, Bank"});
    TestView::Line see = line("See the iPhone's screen", Mark::passed);
    see.detail = qtText(seen);
    return {.lines = {see, line("Press Home", Mark::passed),
                      line("Move the pointer", Mark::passed, "AssistiveTouch is on"),
                      line("Open Settings by typing", Mark::passed),
                      line("Back to the Home screen", Mark::passed)},
            .running = false,
            .message = qtText(ownerText(
                "PhoneTest",
                "Everything works. Ask your AI something like “Open Settings on my iPhone and "
                "tell me which iOS version it has.”"))};
}

TestView pointerTest() {
    TestView test = passedTest();
    test.lines[2] = line("Move the pointer", Mark::warning, PhoneTest::kPointerUnseen);
    test.message =
        qtText(ownerText("PhoneTest", "Typing works, but taps won't until AssistiveTouch is on."));
    return test;
}

}  // namespace tandrel::samples
