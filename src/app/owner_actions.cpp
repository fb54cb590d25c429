#include "app/owner_actions.h"

#include <array>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "app/ai_apps.h"
#include "app/owner_text.h"
#include "app/status_explain.h"
#include "base/environment.h"
#include "base/file.h"
#include "base/log.h"
#include "engine/other_engines.h"
#include "http/client.h"

namespace tandrel {
namespace {

using Outcome = OwnerActions::Outcome;

constexpr Duration kMatchPatience = std::chrono::seconds(60);

// The desktops' own Bluetooth settings; the first that is installed is opened.
// clang-format off
constexpr std::array<std::array<const char*, 2>, 5> kBluetoothSettings{{
    {"gnome-control-center", "bluetooth"},
    {"systemsettings",       "kcm_bluetooth"},
    {"systemsettings5",      "kcm_bluetooth"},
    {"blueman-manager",      nullptr},
    {"blueberry",            nullptr},
}};
// clang-format on

bool isOnSearchPath(const std::string& program) {
    std::string folders = environment("PATH").value_or("/usr/local/bin:/usr/bin:/bin");
    for (std::size_t start = 0; start <= folders.size();) {
        const std::size_t end = std::min(folders.find(':', start), folders.size());
        const std::filesystem::path folder = folders.substr(start, end - start);
        if (folder.is_absolute() && isExecutableFile(folder / program)) return true;
        start = end + 1;
    }
    return false;
}

Outcome outcomeOf(const Result<void>& result) {
    return result ? Outcome{true, ""} : Outcome{false, result.error().message};
}

// What this system has no page of settings for is said in a sentence.
Outcome advice(Fix fix) {
    if (fix == Fix::cameraPrivacy) {
        return {false,
                ownerText("OwnerActions",
                          "This computer lets a user see video devices through the group "
                          "\"video\": run `sudo usermod -aG video \"$USER\"` and log in again.")};
    }
    return {false, ownerText("OwnerActions",
                             "Whether Tandrel may use Bluetooth is decided by this computer's "
                             "administrator: the system bus must let you talk to org.bluez.")};
}

}  // namespace

OwnerActions::OwnerActions(Services services)
    : to_(std::move(services)), queue_("tandrel.owner", to_.clock) {}

OwnerActions::~OwnerActions() {
    stopping_.request_stop();
    queue_.stop();
}

void OwnerActions::run(Work work, Done done) {
    queue_.post([this, work = std::move(work), done = std::move(done)] {
        if (stopping_.stop_requested()) return;
        const Outcome outcome = work();
        to_.state.refresh();
        if (!done) return;
        to_.loop.post([alive = std::weak_ptr(alive_), done, outcome] {
            if (!alive.expired()) done(outcome);
        });
    });
}

void OwnerActions::change(std::function<Result<void>(UserDefaults&)> setting, Done done) {
    run([this, setting = std::move(setting)] { return outcomeOf(setting(to_.defaults)); },
        std::move(done));
}

void OwnerActions::setPaused(bool paused, Done done) {
    change([=](UserDefaults& defaults) { return defaults.set("paused", paused); }, std::move(done));
}

void OwnerActions::setLink(LinkChoice link, Done done) {
    const char* word = link == LinkChoice::airplay ? "airplay" : "cable";
    change([=](UserDefaults& defaults) { return defaults.set("link", word); }, std::move(done));
}

void OwnerActions::setAskBeforePayments(bool ask, Done done) {
    change(
        [=](UserDefaults& defaults) -> Result<void> {
            TRY_VOID(defaults.set("askBeforePayments", ask));
            log(fmt::format("Ask me before payments turned {}", ask ? "on" : "off"));
            return {};
        },
        std::move(done));
}

void OwnerActions::setAskWhenUnsure(bool ask, Done done) {
    change([=](UserDefaults& defaults) { return defaults.set("askWhenUnsure", ask); },
           std::move(done));
}

void OwnerActions::setSetupDone(bool isDone, Done done) {
    run([this, isDone] { return outcomeOf(to_.state.setSetupDone(isDone)); }, std::move(done));
}

void OwnerActions::addTo(AIApp app, Done done) {
    run([this, app] { return addToAIApp(to_.ai, app); }, std::move(done));
}

void OwnerActions::leaveOut(AIApp app, Done done) {
    change([=](UserDefaults& defaults) { return forgetEntry(app, defaults); }, std::move(done));
}

void OwnerActions::restartClaudeDesktop(Done done) {
    run(
        [this]() -> Outcome {
            if (to_.ai.restartClaudeDesktop()) return {true, ""};
            return {false, ownerText("OwnerActions",
                                     "Claude Desktop didn't restart. Quit it and open it again.")};
        },
        std::move(done));
}

Outcome OwnerActions::matchAgain() const {
    const auto engine = LoopbackUrl::parse(to_.engine.ownURL());
    if (!engine) return {false, engine.error().message};
    const auto reply = httpPost(*engine, "/match", Json::object(),
                                {.timeout = kMatchPatience, .stop = stopping_.get_token()});
    if (!reply) return {false, Explain::actionError("could not connect", 0)};
    if (reply->status == 200) return {true, ""};
    return {false,
            Explain::actionError(textMember(reply->json(), "error").value_or(""), reply->status)};
}

Outcome OwnerActions::openBluetoothSettings() const {
    for (const auto& [program, page] : kBluetoothSettings) {
        if (!isOnSearchPath(program)) continue;
        const auto arguments =
            page == nullptr ? std::vector<std::string>{} : std::vector<std::string>{page};
        return outcomeOf(to_.processes.startDetached(program, arguments));
    }
    return {false, ownerText("OwnerActions", "Turn Bluetooth on with `bluetoothctl power on`.")};
}

Outcome OwnerActions::quitOthers() {
    const auto names = quitOtherEngines(to_.running);
    if (names.empty()) return {false, ownerText("OwnerActions", "Nothing to quit.")};
    to_.loop.post([reopen = to_.reopen] { reopen(); });
    return {true, filledIn(ownerText("OwnerActions", "Quit %1. Reopening Tandrel…"),
                           {fmt::format("{}", fmt::join(names, ", "))})};
}

void OwnerActions::fix(Fix fix, Done done) {
    const auto now = [&](auto deed) {
        deed();
        run([] { return Outcome{true, ""}; }, std::move(done));
    };
    switch (fix) {
        case Fix::allowBluetooth:
            return now([&] { to_.engine.startBluetooth(); });
        case Fix::allowCamera:
            return now([&] { to_.engine.startScreens(); });
        case Fix::reconnect:
            return now([&] { to_.engine.reconnect(); });
        case Fix::resume:
            return setPaused(false, std::move(done));
        case Fix::approveHelper:
            return now([&] { to_.state.checkHelper(); });
        case Fix::bluetoothSettings:
            return run([this] { return openBluetoothSettings(); }, std::move(done));
        case Fix::matchAgain:
            return run([this] { return matchAgain(); }, std::move(done));
        case Fix::quitOthers:
            return run([this] { return quitOthers(); }, std::move(done));
        case Fix::moveToApplications:
            return run(
                [this]() -> Outcome {
                    const auto problem = to_.moveToApplications();
                    return {!problem, problem.value_or("")};
                },
                std::move(done));
        case Fix::bluetoothPrivacy:
        case Fix::cameraPrivacy:
            return run([fix] { return advice(fix); }, std::move(done));
        case Fix::airplaySettings:
        case Fix::allowScreenRecording:
        case Fix::checkPointer:
        case Fix::showScreen:
        case Fix::test:
            return;
    }
}

}  // namespace tandrel
