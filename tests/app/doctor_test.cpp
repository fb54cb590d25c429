#include "app/doctor.h"

#include <gmock/gmock.h>

namespace tandrel {
namespace {

using testing::StartsWith;

Findings healthy() {
    Findings found;
    found.engineUrl = "http://127.0.0.1:7390";
    found.engineApp = "Tandrel";
    found.engineVersion = "1.2";
    AppModelInputs& in = found.snapshot.inputs;
    in.advertisedName = "Tandrel";
    in.macName = "Desk";
    in.bluetoothState = "1 connected, advertising as Tandrel";
    in.bluetoothReady = in.screenReady = in.phoneConnected = in.usbPhone = true;
    in.anyBluetoothHost = true;
    in.screenState = PhoneScreen::awake;
    found.snapshot.phones = {{"P", "Phone", ScreenSource::usb, true, true, 1206, 2622}};
    return found;
}

// From the last condition to the first: each fault comes on top of those before it, so that each is
// seen to be put right before all that follow it.
TEST(Doctor, TheFirstFaultIsTheNextStep) {
    const std::pair<void (*)(Findings&), const char*> rows[] = {
        {[](Findings& found) { found.snapshot.helper = {HelperCheck::State::Kind::failed, "x"}; },
         "Install Tandrel again."},
        {[](Findings& found) { found.snapshot.inputs.paused = true; },
         "Turn it back on in the Tandrel menu, or run `tandrel-app --set paused false`."},
        {[](Findings& found) { found.snapshot.inputs.phoneConnected = false; },
         "Keep it unlocked with AssistiveTouch on."},
        {[](Findings& found) { found.snapshot.inputs.anyBluetoothHost = false; },
         "On the iPhone: Settings › Bluetooth › Tandrel"},
        {[](Findings& found) { found.readError = "install tesseract-ocr-eng"; },
         "install tesseract-ocr-eng"},
        {[](Findings& found) { found.snapshot.inputs.screenState = PhoneScreen::locked; },
         "Unlock the iPhone. Your AI can't unlock it for you."},
        {[](Findings& found) { found.snapshot.inputs.screenReady = false; }, "Unlock the iPhone."},
        {[](Findings& found) {
             found.snapshot.inputs.usbPhone = false;
             found.snapshot.inputs.usbPlugged = true;
         },
         "Unlock it, and tap Trust if it asks."},
        {[](Findings& found) { found.snapshot.inputs.usbPlugged = false; },
         "Plug the iPhone into this computer, or choose AirPlay: `tandrel-app --set link "
         "airplay`."},
        {[](Findings& found) { found.snapshot.inputs.linkChoice = LinkChoice::airplay; },
         "On the iPhone: Control Center › Screen Mirroring › Desk"},
        {[](Findings& found) { found.snapshot.inputs.bluetoothReady = false; },
         "Turn Bluetooth on."},
        {[](Findings& found) { found.engineApp = "PocketLink"; },
         "Quit PocketLink, then start Tandrel."},
        {[](Findings& found) { found.engineApp.clear(); },
         "Start Tandrel: run `tandrel-app` and leave it running."},
    };
    Findings found = healthy();
    EXPECT_TRUE(diagnose(found).ready);
    EXPECT_EQ(diagnose(found).next, "");
    for (const auto& [change, next] : rows) {
        change(found);
        EXPECT_FALSE(diagnose(found).ready) << next;
        EXPECT_EQ(diagnose(found).next, next);
    }
}

TEST(Doctor, TellsHowEachBluetoothAdapterStands) {
    const std::pair<AdapterReport, const char*> rows[] = {
        {{"hci0", true, true, true, "Ada's", {"Ada's", "Bo's"}, 2},
         "keyboard of Ada's; paired: Ada's, Bo's; sent away, since each adapter drives one phone: "
         "2"},
        {{"hci0", true, true, true, "", {}, 0},
         "can be a keyboard, on, phones can find it; paired: none"},
        {{"hci0", true, true, false, "", {}, 0},
         "can be a keyboard, on, phones can't find it yet; paired: none"},
        {{"hci0", true, false, false, "", {}, 0}, "can be a keyboard, off; paired: none"},
        {{"hci0", false, true, false, "", {}, 0}, "cannot be a keyboard; paired: none"},
    };
    for (const auto& [adapter, words] : rows) {
        Findings found = healthy();
        found.snapshot.adapters = {adapter};
        const Diagnosis diagnosis = diagnose(found);
        EXPECT_TRUE(diagnosis.ready) << words;
        EXPECT_EQ(diagnosis.conditions.at(2).name, "Adapter hci0");
        EXPECT_EQ(diagnosis.conditions.at(2).words, words);
        found.bluetoothChannels = 3;
        EXPECT_THAT(diagnose(found).conditions.at(3).words, testing::HasSubstr("Channels = 1"));
        found.snapshot.adapters.clear();
        EXPECT_EQ(diagnose(found).conditions.at(2).name, "Picture") << "the virtual phone's";
    }
}

TEST(Doctor, TheCableSaysItselfWhatItLacks) {
    Findings found = healthy();
    found.snapshot.inputs.screenReady = found.snapshot.inputs.usbPhone = false;
    found.snapshot.absences = {"Bluetooth: x", "Cable: the chosen grabber \"U\" is not plugged in"};
    EXPECT_EQ(diagnose(found).next, "the chosen grabber \"U\" is not plugged in.");
}

TEST(Doctor, AnAppThatCouldBeAddedIsTheNextStepWhenAllElseIsInOrder) {
    const std::tuple<AIAppStatus, const char*, const char*> rows[] = {
        {{.app = AIApp::codex, .toPaste = "[x]"}, "not on this computer", ""},
        {{.app = AIApp::codex, .installed = true, .link = Link::addedHere, .toPaste = ""},
         "uses this copy of Tandrel",
         ""},
        {{.app = AIApp::codex, .installed = true, .toPaste = "[x]"},
         "doesn't know Tandrel yet",
         "Codex doesn't know Tandrel yet; add it in the setup, or by hand:\n[x]"},
        {{.app = AIApp::codex, .link = Link::addedElsewhere, .toPaste = "[x]"},
         "still points to an older copy of Tandrel",
         "Codex still points to an older copy of Tandrel; add it in the setup, or by hand:\n[x]"},
    };
    for (const auto& [app, words, next] : rows) {
        Findings found = healthy();
        found.snapshot.aiApps = {app};
        const Diagnosis diagnosis = diagnose(found);
        EXPECT_TRUE(diagnosis.ready) << words;
        EXPECT_EQ(diagnosis.conditions.back().words, words);
        EXPECT_EQ(diagnosis.next, next) << words;
        EXPECT_EQ(diagnosis.json()["conditions"].back()["name"], "Codex");
    }
}

}  // namespace
}  // namespace tandrel
