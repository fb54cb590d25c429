#include "app/doctor.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace tandrel {
namespace {

using State = Condition::State;
using HelperKind = HelperCheck::State::Kind;

Condition engine(const Findings& found) {
    if (found.engineApp.empty()) {
        return {State::bad, "Engine", "nothing answers on " + found.engineUrl,
                "Start Tandrel: run `tandrel-app` and leave it running."};
    }
    if (found.engineApp != "Tandrel") {
        return {State::bad, "Engine", found.engineApp + " answers on " + found.engineUrl,
                "Quit " + found.engineApp + ", then start Tandrel."};
    }
    return {State::good, "Engine",
            fmt::format("Tandrel {} answers on {}", found.engineVersion, found.engineUrl), ""};
}

std::string joined(const std::vector<std::string>& names) {
    std::string list;
    for (const std::string& name : names) list += (list.empty() ? "" : ", ") + name;
    return list;
}

Condition bluetooth(const Findings& found) {
    const AppModelInputs& in = found.snapshot.inputs;
    if (in.bluetoothPerm == Permission::denied) {
        return {State::bad, "Bluetooth", "not allowed",
                "Let your user talk to org.bluez on the system bus."};
    }
    if (in.bluetoothReady) return {State::good, "Bluetooth", in.bluetoothState, ""};
    for (const std::string& absence : found.snapshot.absences) {
        if (absence.starts_with("Bluetooth: ")) {
            return {State::bad, "Bluetooth", absence.substr(std::size("Bluetooth: ") - 1),
                    "Try Tandrel with the virtual iPhone: TANDREL_VIRTUAL_PHONE=1 tandrel-app."};
        }
    }
    return {State::bad, "Bluetooth", in.bluetoothState, "Turn Bluetooth on."};
}

// An adapter as the daemon has it: what it can, whether it is on, and whose phones it knows.
Condition adapter(const AdapterReport& report) {
    std::string words;
    if (!report.peripheral) {
        words = "cannot be a keyboard";
    } else if (!report.powered) {
        words = "can be a keyboard, off";
    } else if (!report.phone.empty()) {
        words = "keyboard of " + report.phone;
    } else {
        words = report.advertising ? "can be a keyboard, on, phones can find it"
                                   : "can be a keyboard, on, phones can't find it yet";
    }
    words += "; paired: " + (report.paired.empty() ? "none" : joined(report.paired));
    if (report.refusedPhones > 0) {
        words += fmt::format("; sent away, since each adapter drives one phone: {}",
                             report.refusedPhones);
    }
    return {State::note, "Adapter " + report.name, words, ""};
}

// Only worth knowing: a phone need not use them, and most keep the order.
Condition channels(int count) {
    return {State::note, "Typing",
            fmt::format("up to {} Bluetooth channels for a phone; if typed letters change places, "
                        "put Channels = 1 below [GATT] in /etc/bluetooth/main.conf and run: sudo "
                        "systemctl restart bluetooth",
                        count),
            ""};
}

std::string pictureOf(const AppSnapshot& snapshot) {
    std::string phones;
    for (const PhoneSeen& phone : snapshot.phones) {
        if (!phone.picture) continue;
        phones += fmt::format("{}{} ({} x {})", phones.empty() ? "" : ", ", phone.name, phone.width,
                              phone.height);
    }
    return phones;
}

// What this system lacks for it, without its name; empty when nothing is known to be missing.
std::string absenceOf(std::string_view subject, const AppSnapshot& snapshot) {
    for (const std::string& absence : snapshot.absences) {
        if (absence.starts_with(subject)) return absence.substr(subject.size());
    }
    return {};
}

Condition screen(const Findings& found) {
    const AppModelInputs& in = found.snapshot.inputs;
    if (in.screenReady) return {State::good, "Picture", pictureOf(found.snapshot), ""};
    const std::string& why = found.snapshot.airplay.error;
    if (in.linkChoice == LinkChoice::airplay) {
        return {State::bad, "Picture", why.empty() ? "nothing is mirrored over AirPlay" : why,
                "On the iPhone: Control Center › Screen Mirroring › " + in.macName};
    }
    if (in.usbPhone) return {State::bad, "Picture", "no frame yet", "Unlock the iPhone."};
    if (in.usbPlugged && absenceOf("Cable: ", found.snapshot).empty()) {
        return {State::bad, "Picture", "the iPhone is plugged in but isn't sharing its screen",
                "Unlock it, and tap Trust if it asks."};
    }
    if (const std::string missing = absenceOf("Cable: ", found.snapshot); !missing.empty()) {
        return {State::bad, "Picture", missing, missing + "."};
    }
    return {State::bad, "Picture", "no iPhone on the cable",
            "Plug the iPhone into this computer, or choose AirPlay: `tandrel-app --set link "
            "airplay`."};
}

Condition awake(const Findings& found) {
    switch (found.snapshot.inputs.screenState) {
        case PhoneScreen::off:
            return {State::bad, "Screen", "off", "Wake the iPhone and unlock it."};
        case PhoneScreen::locked:
            return {State::bad, "Screen", "locked",
                    "Unlock the iPhone. Your AI can't unlock it for you."};
        case PhoneScreen::awake:
            return {State::good, "Screen", "awake", ""};
        case PhoneScreen::unknown:
            break;
    }
    return {State::note, "Screen", "not known", ""};
}

Condition reading(const Findings& found) {
    if (found.readError) return {State::bad, "Reading", *found.readError, *found.readError};
    if (!found.snapshot.inputs.screenReady) return {State::note, "Reading", "not tried", ""};
    return {State::good, "Reading", "the screen's text can be read", ""};
}

Condition connection(const Findings& found) {
    const AppModelInputs& in = found.snapshot.inputs;
    if (in.phoneConnected) return {State::good, "iPhone", "connected over Bluetooth", ""};
    const bool isMatching = in.anyBluetoothHost && in.screenReady;
    return {State::bad, "iPhone",
            isMatching ? "connected, but which screen is its is not known yet"
                       : "not connected over Bluetooth",
            isMatching
                ? "Keep it unlocked with AssistiveTouch on."
                : fmt::format("On the iPhone: Settings › Bluetooth › {}", in.advertisedName)};
}

Condition control(const Findings& found) {
    if (!found.snapshot.inputs.paused) return {State::good, "Control", "on", ""};
    return {State::bad, "Control", "paused",
            "Turn it back on in the Tandrel menu, or run `tandrel-app --set paused false`."};
}

Condition helper(const Findings& found) {
    const HelperCheck::State& state = found.snapshot.helper;
    switch (state.kind) {
        case HelperKind::ready:
            return {State::good, "Helper", "AI apps can start it", ""};
        case HelperKind::failed:
            return {State::bad, "Helper", "it does not start: " + state.text,
                    "Install Tandrel again."};
        case HelperKind::needsApproval:
            return {State::bad, "Helper", "it was downloaded and not yet approved",
                    "Run `tandrel-app --helper-check run` once."};
        case HelperKind::blocked:
            return {State::bad, "Helper", "it gives no answer", "Install Tandrel again."};
        case HelperKind::missing:
            return {State::bad, "Helper", "it is not there", "Install Tandrel again."};
    }
    return {};
}

Condition payments(const Findings& found) {
    if (found.snapshot.askBeforePayments) return {State::note, "Payments", "you are asked", ""};
    return {State::note, "Payments", "you are not asked before payments", ""};
}

Condition aiApp(const AIAppStatus& status) {
    Condition condition{status.link == Link::addedHere ? State::good : State::note,
                        std::string(name(status.app)), describe(status), ""};
    const bool isOpen = status.link != Link::addedHere && (status.installed || added(status.link));
    if (isOpen) condition.step = "add it in the setup, or by hand:\n" + status.toPaste;
    return condition;
}

enum class Asks { engine, thisComputer };
struct DoctorRow {
    Asks asks;
    Condition (*condition)(const Findings&);
};

// In the order in which they are to be put right.
// clang-format off
constexpr DoctorRow kDoctorRows[] = {
    {Asks::thisComputer, engine},
    {Asks::engine,       bluetooth},
    {Asks::engine,       screen},
    {Asks::engine,       awake},
    {Asks::engine,       reading},
    {Asks::engine,       connection},
    {Asks::thisComputer, control},
    {Asks::thisComputer, helper},
    {Asks::thisComputer, payments},
};

constexpr std::pair<State, const char*> kWords[] = {
    {State::good, "ok"},
    {State::bad,  "NO"},
    {State::note, "--"},
};
// clang-format on

std::string word(State state) {
    return std::ranges::find(kWords, state, &std::pair<State, const char*>::first)->second;
}

}  // namespace

Diagnosis diagnose(const Findings& found) {
    Diagnosis diagnosis;
    for (const DoctorRow& row : kDoctorRows) {
        if (row.asks == Asks::engine && found.engineApp != "Tandrel") continue;
        diagnosis.conditions.push_back(row.condition(found));
        if (row.condition != bluetooth) continue;
        for (const AdapterReport& report : found.snapshot.adapters) {
            diagnosis.conditions.push_back(adapter(report));
        }
        if (!found.snapshot.adapters.empty() && found.bluetoothChannels > 1) {
            diagnosis.conditions.push_back(channels(found.bluetoothChannels));
        }
    }
    for (const AIAppStatus& app : found.snapshot.aiApps) {
        diagnosis.conditions.push_back(aiApp(app));
    }
    const auto& all = diagnosis.conditions;
    const auto bad = std::ranges::find(all, State::bad, &Condition::state);
    diagnosis.ready = bad == all.end();
    const auto open = std::ranges::find_if(all, [](const auto& c) { return !c.step.empty(); });
    if (!diagnosis.ready) {
        diagnosis.next = bad->step;
    } else if (open != all.end()) {
        diagnosis.next = fmt::format("{} {}; {}", open->name, open->words, open->step);
    }
    return diagnosis;
}

std::string Diagnosis::text() const {
    std::string text;
    for (const Condition& condition : conditions) {
        text +=
            fmt::format("{}  {:<16}{}\n", word(condition.state), condition.name, condition.words);
    }
    text += ready ? "\nAn assistant could use the iPhone now.\n"
                  : "\nAn assistant can't use the iPhone now.\n";
    if (!next.empty()) text += "Next: " + next + "\n";
    return text;
}

Json Diagnosis::json() const {
    Json list = Json::array();
    for (const Condition& condition : conditions) {
        constexpr const char* kStates[] = {"good", "bad", "note"};
        list.push_back({{"name", condition.name},
                        {"state", kStates[static_cast<int>(condition.state)]},
                        {"words", condition.words}});
        if (!condition.step.empty()) list.back()["step"] = condition.step;
    }
    Json reply = {{"ready", ready}, {"conditions", std::move(list)}};
    if (!next.empty()) reply["next"] = next;
    return reply;
}

}  // namespace tandrel
