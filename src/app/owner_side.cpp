#include "app/owner_side.h"

#include "base/log.h"
#include "base/paths.h"

namespace tandrel {
namespace {

constexpr int kReopenAfterSeconds = 1;

AppState::Options modelOptions(const Wiring& wiring, const AppInfo& info) {
    const bool isVirtual = wiring.backends().virtualPhones != nullptr;
    return {.advertisedName = info.bluetoothName,
            .macName = AppInfo::macName(),
            .health = isVirtual ? AppState::Options::Health::forgotten
                                : AppState::Options::Health::remembered,
            .place = Installer::isInPassing(info.bundle, homeFolder())
                         ? AppState::Options::Place::passing
                         : AppState::Options::Place::lasting};
}

}  // namespace

OwnerSide::OwnerSide(Wiring& wiring, const AppInfo& info, MainLoop& loop, Clock& clock)
    : wiring_(wiring),
      loop_(loop),
      services_(info, clock),
      installer_(info, Installer::Places::ofThisUser(), services_.processes(), clock),
      autostart_(info.bundle, configHome()),
      state_({.defaults = wiring.defaults(),
              .permissions = *wiring.backends().permissions,
              .usb = *wiring.backends().usb,
              .helper = services_.helper(),
              .ai = services_.ai(),
              .loop = loop,
              .clock = clock},
             modelOptions(wiring, info)),
      actions_({.state = state_,
                .engine = wiring.engine(),
                .defaults = wiring.defaults(),
                .ai = services_.ai(),
                .running = services_.running(),
                .processes = services_.processes(),
                .loop = loop,
                .clock = clock,
                .reopen =
                    [this] {
                        makeRoom();
                        const auto started = installer_.relaunch(kReopenAfterSeconds);
                        if (!started) return log(started.error().message);
                        quitSoon();
                    },
                .moveToApplications =
                    [this] {
                        makeRoom();
                        auto problem = installer_.moveToApplications();
                        if (!problem) loop_.post([this] { quitSoon(); });
                        return problem;
                    }}),
      told_(loop),
      power_(told_, loop),
      wakeCheck_(power_, loop,
                 {.snapshot = [this] { return state_.snapshot(); },
                  .letGo = [this] { wiring_.engine().letGo(); },
                  .reconnect = [this] { wiring_.engine().reconnect(); }}) {
    AppState::setShared(&state_);
}

OwnerSide::~OwnerSide() {
    stop();
    AppState::setShared(nullptr);
}

void OwnerSide::start() {
    const Engine& engine = wiring_.engine();
    if (const auto url = LoopbackUrl::parse(engine.ownURL())) {
        state_.startPolling(engine.mode(), *url);
    } else {
        log("TANDREL_ENGINE_URL: " + url.error().message);
    }
}

void OwnerSide::stop() {
    makeRoom();
    services_.stop();
    state_.stop();
}

EnginePlace OwnerSide::enginePlace() const {
    const Engine& engine = wiring_.engine();
    const auto usual = [](const std::string& url, std::uint16_t port) {
        return LoopbackUrl::parse(url).value_or(LoopbackUrl::ofPort(port));
    };
    return {usual(engine.ownURL(), engine.settings().port),
            usual(engine.ownAirplayURL(), engine.settings().airplayPort)};
}

void OwnerSide::listenForCopies(std::function<void()> show) {
    const std::uint16_t port = wiring_.engine().settings().port;
    if (port == 0) return;  // each copy takes a port of its own
    auto listening = FirstCopy::listen(FirstCopy::meetingPlace(port), loop_, std::move(show));
    if (listening) {
        firstCopy_ = *std::move(listening);
    } else {
        log("reopening: " + listening.error().message);
    }
}

void OwnerSide::makeRoom() {
    if (firstCopy_) firstCopy_->leave();
}

void OwnerSide::quitSoon() {
    quitting_ = loop_.after(Installer::kQuitAfter, [this] { loop_.quit(0); });
}

}  // namespace tandrel
