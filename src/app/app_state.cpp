#include "app/app_state.h"

#include <algorithm>
#include <atomic>
#include <cassert>
#include <tuple>
#include <utility>
#include <vector>

#include "app/ai_apps.h"
#include "base/log.h"
#include "http/client.h"
#include "http/target.h"
#include "screen/usb_probe.h"

namespace tandrel {
namespace {

constexpr Duration kStatusPatience = std::chrono::milliseconds(800);
constexpr Duration kLookPatience = std::chrono::seconds(10);
// An awake phone is left in peace this long; whether one that sleeps or is locked is back shows
// sooner.
constexpr double kAwakeIsKnownSeconds = 9;
constexpr double kElseIsKnownSeconds = 3;

AppState* sharedState = nullptr;

}  // namespace

// Lives on the main thread, but for `changed`, which any thread may call.
struct AppState::Listeners : std::enable_shared_from_this<Listeners> {
    explicit Listeners(MainLoop& mainLoop) : loop(mainLoop) {}

    // Several changes before the main thread comes to it are one call.
    void changed() {
        if (pending.exchange(true)) return;
        loop.post([weak = weak_from_this()] {
            if (const auto self = weak.lock()) self->tell();
        });
    }
    void tell() {
        pending = false;
        if (!current) return;
        const AppSnapshot now = current();
        // A listener may end itself or others, and add some.
        const auto everyone = list;
        for (const auto& weak : everyone) {
            if (const auto listener = weak.lock()) (*listener)(now);
        }
        std::erase_if(list, [](const auto& weak) { return weak.expired(); });
    }

    MainLoop& loop;
    std::atomic<bool> pending = false;
    std::function<AppSnapshot()> current;  // none once the model has stopped
    std::vector<std::weak_ptr<Listener>> list;
};

AppState& AppState::shared() {
    assert(sharedState != nullptr);
    return *sharedState;
}

void AppState::setShared(AppState* instance) { sharedState = instance; }

AppState::AppState(Services services, Options options)
    : to_(services),
      options_(std::move(options)),
      listeners_(std::make_shared<Listeners>(to_.loop)),
      slowQueue_("tandrel.model2", to_.clock),
      queue_("tandrel.model", to_.clock) {
    listeners_->current = [this] { return snapshot(); };
    snapshot_.inputs.advertisedName = options_.advertisedName;
    snapshot_.inputs.macName = options_.macName;
    snapshot_.liesInPassing = options_.place == Options::Place::passing;
    for (const AIApp app : {AIApp::claudeCode, AIApp::claudeDesktop, AIApp::codex}) {
        snapshot_.aiApps.emplace_back().app = app;
    }
    snapshot_.take(OwnerSettings::read(to_.defaults));
}

AppState::~AppState() { stop(); }

void AppState::startPolling(EngineMode mode, const LoopbackUrl& engine) {
    change([&](AppSnapshot& snapshot) { snapshot.inputs.mode = mode; });
    queue_.post([this, engine] {
        queue_.assertCurrent();
        engine_ = engine;
        pollAgain();
    });
    slowQueue_.post([this, engine] {
        slowQueue_.assertCurrent();
        slowEngine_ = engine;
        lookSlowly();
        runHelper();
        claude_ = to_.ai.findClaude();
        lookSlowlyAgain();
    });
}

void AppState::stop() {
    stopping_.request_stop();
    queue_.stop();
    slowQueue_.stop();
    listeners_->current = nullptr;
}

AppSnapshot AppState::snapshot() const {
    const MutexLock lock(mutex_);
    return snapshot_;
}

std::shared_ptr<void> AppState::listen(Listener changed) {
    auto listener = std::make_shared<Listener>(std::move(changed));
    listeners_->list.push_back(listener);
    listeners_->changed();
    return listener;
}

void AppState::change(const std::function<void(AppSnapshot&)>& edit) {
    {
        const MutexLock lock(mutex_);
        const AppSnapshot before = snapshot_;
        edit(snapshot_);
        if (snapshot_ == before) return;
    }
    listeners_->changed();
}

void AppState::refresh() {
    queue_.post([this] {
        queue_.assertCurrent();
        poll();
    });
    slowQueue_.post([this] {
        slowQueue_.assertCurrent();
        if (!slowEngine_) return;
        if (!claude_) claude_ = to_.ai.findClaude();
        lookSlowly();
    });
}

void AppState::checkHelper() {
    slowQueue_.post([this] {
        slowQueue_.assertCurrent();
        runHelper();
        if (slowEngine_) lookSlowly();
    });
}

void AppState::setTestPassed(bool passed) {
    change([&](AppSnapshot& snapshot) { snapshot.testPassed = passed; });
}

void AppState::setScreenState(PhoneScreen state) {
    change([&](AppSnapshot& snapshot) { snapshot.inputs.screenState = state; });
}

void AppState::setAssistiveTouchOn() {
    change([](AppSnapshot& snapshot) { snapshot.assistiveTouchOn = true; });
}

Result<void> AppState::setSetupDone(bool done) {
    TRY_VOID(to_.defaults.set("setupDone", done));
    const auto now = OwnerSettings::read(to_.defaults);
    change([&](AppSnapshot& snapshot) { snapshot.take(now); });
    return {};
}

void AppState::pollAgain() {
    poll();
    queue_.postAfter(kPollInterval, [this] {
        queue_.assertCurrent();
        pollAgain();
    });
}

void AppState::poll() {
    if (!engine_ || stopping_.stop_requested()) return;
    const auto stop = stopping_.get_token();
    const EngineReport report = askEngine(*engine_, kStatusPatience, stop);
    const bool asksBus = !report.sees(ScreenSource::usb);
    const auto cable = asksBus && !USBProbe::iPhonesPluggedIn(to_.usb).empty()
                           ? CablePhone::pluggedIn
                           : CablePhone::notSeen;
    const auto settings = OwnerSettings::read(to_.defaults);
    if (stopping_.stop_requested()) return;
    bool firstSuccess = false;
    change([&](AppSnapshot& snapshot) {
        snapshot.take(settings);
        const bool before = snapshot.phoneWasSetUp;
        snapshot.take(report, cable);
        firstSuccess = snapshot.phoneWasSetUp && !before;
    });
    if (!firstSuccess || options_.health == Options::Health::forgotten) return;
    if (const auto kept = to_.defaults.set("phoneWasSetUp", true); !kept) {
        log(kept.error().message);
    }
}

void AppState::lookSlowlyAgain() {
    lookSlowly();
    slowQueue_.postAfter(kSlowInterval, [this] {
        slowQueue_.assertCurrent();
        lookSlowlyAgain();
    });
}

void AppState::lookSlowly() {
    if (stopping_.stop_requested()) return;
    readScreenIfStale();
    auto apps = lookAtAIApps(to_.ai, claude_);
    keepTrackOf(apps);
    const HelperCheck::State helper = helperState();
    const Permission bluetooth = to_.permissions.bluetooth();
    const Permission camera = to_.permissions.camera();
    const Permission screenRecording = to_.permissions.screenRecording();
    change([&](AppSnapshot& snapshot) {
        snapshot.aiApps = apps;
        snapshot.helper = helper;
        snapshot.inputs.bluetoothPerm = bluetooth;
        snapshot.cameraPerm = camera;
        snapshot.screenRecordingPerm = screenRecording;
    });
}

void AppState::keepTrackOf(std::vector<AIAppStatus>& apps) {
    const auto kept = rememberEntries(apps, to_.defaults);
    // Said once, not every few seconds.
    const std::string problem = kept ? "" : kept.error().message;
    if (!problem.empty() && problem != problemOfEntries_) log(problem);
    problemOfEntries_ = problem;
    markLost(apps, to_.defaults);
}

void AppState::runHelper() {
    const auto stop = stopping_.get_token();
    const auto found = to_.helper.run(HelperCheck::kTimeout, stop);
    if (!stop.stop_requested()) helperRun_ = found;
}

// What a run of the helper has shown holds until the quick check finds something else.
HelperCheck::State AppState::helperState() const {
    const auto quick = to_.helper.state();
    const bool startable = quick.kind == HelperCheck::State::Kind::ready;
    return startable && helperRun_ ? *helperRun_ : quick;
}

// While no assistant looks, nobody reads the screen; a look has the engine read it, which is cheap
// where nothing changed, and say in its next status what it saw.
void AppState::readScreenIfStale() {
    if (!snapshot().inputs.screenReady) return;
    const auto stop = stopping_.get_token();
    const EngineReport report = askEngine(*slowEngine_, kStatusPatience, stop);
    const bool awake = report.screenState == PhoneScreen::awake;
    const double known = awake ? kAwakeIsKnownSeconds : kElseIsKnownSeconds;
    if (report.screenStateAgeSeconds && *report.screenStateAgeSeconds < known) return;
    std::string target = "/look?maxEdge=32&format=jpeg";
    // With several phones there is none to prefer; the first is as good as any.
    if (report.phones.size() > 1) target += "&device=" + percentEncoded(report.phones.front().id);
    std::ignore = httpGet(*slowEngine_, target, {.timeout = kLookPatience, .stop = stop});
}

}  // namespace tandrel
