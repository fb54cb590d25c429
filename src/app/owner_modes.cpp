#include "app/owner_modes.h"

#include <algorithm>
#include <cstdio>

#include <fmt/format.h>
#include <unistd.h>

#include "app/ai_apps.h"
#include "app/doctor.h"
#include "app/owner_services.h"
#include "app/phone_test.h"
#include "app/status_explain.h"
#include "http/client.h"
#include "platform/linux/bluez_settings.h"
#include "platform/linux/linux_permissions.h"
#include "platform/linux/udev_usb_registry.h"
#include "screen/usb_probe.h"

namespace tandrel {
namespace {

constexpr Duration kDoctorStatusPatience = std::chrono::seconds(5);
constexpr Duration kDoctorLookPatience = std::chrono::seconds(20);

// Has the engine read the screen now; why that was not possible.
std::optional<std::string> readScreen(const LoopbackUrl& engine) {
    const auto look =
        httpGet(engine, "/look?maxEdge=32&format=jpeg", {.timeout = kDoctorLookPatience});
    return look ? textMember(look->json(), "readError") : std::nullopt;
}

Findings examine(OwnerServices& services, const AppInfo& info, const LoopbackUrl& engine) {
    Findings found;
    found.bluetoothChannels = bluez::readChannels();
    AppSnapshot& snapshot = found.snapshot;
    snapshot.inputs.mode = {EngineMode::Kind::own, ""};
    snapshot.inputs.advertisedName = info.bluetoothName;
    snapshot.inputs.macName = AppInfo::macName();
    snapshot.take(OwnerSettings::read(services.defaults()));
    found.readError = readScreen(engine);
    const EngineReport report = askEngine(engine, kDoctorStatusPatience);
    UdevUsbRegistry usb;
    snapshot.take(report, USBProbe::iPhonesPluggedIn(usb).empty() ? CablePhone::notSeen
                                                                  : CablePhone::pluggedIn);
    found.engineUrl = engine.text();
    if (report.up) found.engineApp = report.app.empty() ? "another program" : report.app;
    found.engineVersion = report.version;
    LinuxPermissions permissions;
    snapshot.inputs.bluetoothPerm = permissions.bluetooth();
    snapshot.cameraPerm = permissions.camera();
    snapshot.screenRecordingPerm = permissions.screenRecording();
    snapshot.helper = services.helper().run();
    snapshot.aiApps = lookAtAIApps(services.ai(), services.ai().findClaude());
    markLost(snapshot.aiApps, services.defaults());
    return found;
}

// Draws each line anew as its mark changes, where the terminal can; else prints it once it is
// marked.
class TerminalLines {
 public:
    void show(const PhoneTest::Progress& now) {
        if (now.lines.empty() || now.lines.back() == shown_) return;
        const PhoneTest::Line& line = now.lines.back();
        shown_ = line;
        if (line.mark == PhoneTest::Mark::running) {
            if (isTerminal_) fmt::print("{} {}", mark(line.mark), line.title);
        } else {
            fmt::print("{}{} {}\n", isTerminal_ ? "\r" : "", mark(line.mark), line.title);
            if (line.detail) fmt::print("  {}\n", *line.detail);
        }
        std::fflush(stdout);
    }

 private:
    static const char* mark(PhoneTest::Mark mark) {
        constexpr const char* kMarks[] = {"…", "✓", "✗", "!"};
        return kMarks[static_cast<int>(mark)];
    }

    const bool isTerminal_ = ::isatty(STDOUT_FILENO) != 0;
    std::optional<PhoneTest::Line> shown_;
};

struct AppWord {
    const char* word;
    AIApp app;
};
constexpr AppWord kApps[] = {
    {"claude-code", AIApp::claudeCode},
    {"claude-desktop", AIApp::claudeDesktop},
    {"codex", AIApp::codex},
};

void listApps(const AIConnect& ai, const UserDefaults& defaults) {
    auto apps = lookAtAIApps(ai, ai.findClaude());
    markLost(apps, defaults);
    for (const AppWord& row : kApps) {
        const AIAppStatus& app = apps[static_cast<std::size_t>(row.app)];
        fmt::print("{:<16}{}\n", row.word, describe(app));
    }
}

int cannotAsk(const Error& error) {
    fmt::print(stderr, "{}\n", error.message);
    return 1;
}

}  // namespace

int runHelperCheck(const Arguments& arguments) {
    const OwnerServices services(AppInfo::ofThisProgram(), systemClock());
    fmt::print("state: {}\n", describe(services.helper().state()));
    if (arguments.size() > 1 && arguments[1] == "run") {
        fmt::print("run: {}\n", describe(services.helper().run()));
    }
    return 0;
}

int runDoctor(const Arguments& arguments) {
    const AppInfo info = AppInfo::ofThisProgram();
    OwnerServices services(info, systemClock());
    const auto place = findEngine(services.files().engineState);
    if (!place) return cannotAsk(place.error());
    const Diagnosis diagnosis = diagnose(examine(services, info, place->engine));
    const bool asJson = arguments.size() > 1 && arguments[1] == "--json";
    fmt::print("{}", asJson ? dumpJson(diagnosis.json()) + "\n" : diagnosis.text());
    return diagnosis.ready ? 0 : 1;
}

int runPhoneTest(const Arguments& arguments) {
    OwnerServices services(AppInfo::ofThisProgram(), systemClock());
    const auto place = findEngine(services.files().engineState);
    if (!place) return cannotAsk(place.error());
    const EngineReport report = askEngine(place->engine, kDoctorStatusPatience);
    if (!report.up) return cannotAsk({Explain::actionError("could not connect", 0)});
    fmt::print("{}\n{}\n\n", PhoneTest::kExplanation, PhoneTest::kAdvice);
    AppSnapshot snapshot;
    snapshot.take(OwnerSettings::read(services.defaults()));
    snapshot.take(report, CablePhone::notSeen);
    const TryIt phone(*place, systemClock(), arguments.size() > 1 ? arguments[1] : "");
    TerminalLines lines;
    PhoneTest test(phone, [&](const PhoneTest::Progress& now) { lines.show(now); });
    const auto ended =
        test.run({.paused = report.paused, .from = TryIt::preferred(snapshot.inputs)});
    fmt::print("\n{}\n", ended.message.value_or(""));
    return ended.passed ? 0 : 1;
}

int runConnect(const Arguments& arguments) {
    OwnerServices services(AppInfo::ofThisProgram(), systemClock());
    if (arguments.size() < 2) {
        listApps(services.ai(), services.defaults());
        return 0;
    }
    const auto row = std::ranges::find(kApps, arguments[1], &AppWord::word);
    if (row == std::end(kApps) || arguments.size() > 2) {
        fmt::print(stderr, "usage: tandrel-app --connect [claude-code|claude-desktop|codex]\n");
        return 2;
    }
    const auto outcome = addToAIApp(services.ai(), row->app);
    fmt::print("{}\n", outcome.message);
    if (outcome.ok) {
        AIAppStatus added;
        added.app = row->app;
        added.link = Link::addedHere;
        const auto kept = rememberEntries({added}, services.defaults());
        if (!kept) fmt::print(stderr, "{}\n", kept.error().message);
    }
    if (!outcome.ok && row->app == AIApp::codex) {
        fmt::print("\n{}\n", services.ai().codexSnippet());
    }
    return outcome.ok ? 0 : 1;
}

}  // namespace tandrel
