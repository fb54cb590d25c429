#include "engine/engine.h"

#include <cassert>

#include <fmt/format.h>
#include <unistd.h>

#include "base/file.h"
#include "base/log.h"
#include "engine/other_engines.h"
#include "http/reply_writer.h"

namespace tandrel {
namespace {

constexpr std::string_view kOwnName = "Tandrel";
constexpr int kProbesForEarlierCopy = 6;  // after the first one
constexpr Duration kBetweenProbes = std::chrono::milliseconds(500);
constexpr Duration kMatchAfterReconnect = std::chrono::seconds(4);
constexpr Duration kBetweenAirplayLooks = std::chrono::milliseconds(1500);

Engine* sharedEngine = nullptr;

std::string cannotListen(std::uint16_t port, const Error& error) {
    return fmt::format("can't listen on 127.0.0.1:{}: {}", port, error.message);
}

}  // namespace

Engine& Engine::shared() {
    assert(sharedEngine != nullptr);
    return *sharedEngine;
}

void Engine::setShared(Engine* instance) { sharedEngine = instance; }

Engine::Engine(Services services, EngineSettings settings)
    : to_(std::move(services)),
      settings_(std::move(settings)),
      reader_(to_.recognizer, to_.clock),
      routes_({.hid = to_.hid,
               .devices = to_.devices,
               .reader = reader_,
               .gate = to_.gate,
               .clock = to_.clock,
               .paused = [this] { return paused(); },
               .addStatus = [this](Json& status) { addStatus(status); }}) {}

Engine::~Engine() { stop(); }

void Engine::start(std::stop_token stop) {
    if (mode_.kind != EngineMode::Kind::stopped) return;
    if (settings_.disabled) {
        mode_ = {EngineMode::Kind::failed, "engine disabled (TANDREL_NO_ENGINE=1)"};
        return;
    }
    serveEngine(stop);
    if (mode_.kind == EngineMode::Kind::own) {
        if (to_.permissions.bluetooth() == Permission::granted) startBluetooth();
        if (to_.permissions.camera() == Permission::granted || isAirplayChosen()) startScreens();
    }
    serveAirplay();
    if (mode_.kind == EngineMode::Kind::own) writeStateFile();
}

void Engine::serveEngine(const std::stop_token& stop) {
    auto answer = whoAnswers(settings_.port);
    for (int i = 0; i < kProbesForEarlierCopy && answer == kOwnName; ++i) {
        if (!to_.clock.sleepFor(kBetweenProbes, stop)) break;
        answer = whoAnswers(settings_.port);
    }
    if (answer) {
        mode_ = {EngineMode::Kind::external, *answer};
        log(fmt::format("engine: port {} is served by {}; using it", settings_.port, *answer));
        return;
    }
    auto server = std::make_unique<HTTPServer>(
        settings_.port, [this](const HTTPRequest& request) { return handle(request); },
        ServerOptions{.peers = to_.peers});
    if (const auto started = server->start(); !started) {
        mode_ = {EngineMode::Kind::failed, cannotListen(settings_.port, started.error())};
        log("engine: " + mode_.detail);
        return;
    }
    server_ = std::move(server);
    to_.devices.start();
    mode_ = {EngineMode::Kind::own, {}};
    log("engine: listening on " + ownURL());
}

void Engine::serveAirplay() {
    if (const auto answer = whoAnswers(settings_.airplayPort)) {
        airplayMode_ = {EngineMode::Kind::external, *answer};
        return;
    }
    auto server = std::make_unique<HTTPServer>(
        settings_.airplayPort,
        [this](const HTTPRequest& request) { return handleAirplay(request); },
        ServerOptions{.writer = airplayReplyWriter, .peers = to_.peers});
    if (const auto started = server->start(); !started) {
        airplayMode_ = {EngineMode::Kind::failed,
                        cannotListen(settings_.airplayPort, started.error())};
        log("airplay: " + airplayMode_.detail);
        return;
    }
    airplayServer_ = std::move(server);
    airplayMode_ = {EngineMode::Kind::own, {}};
    airplayTimer_ = to_.loop.every(kBetweenAirplayLooks, [this] { watchAirplay(); });
    watchAirplay();
}

bool Engine::isAirplayChosen() const { return to_.defaults.textValue("link") == "airplay"; }

// Looking for windows and ending the receiver may take a moment, which the main thread has not.
void Engine::watchAirplay() {
    if (to_.permissions.screenRecording() != Permission::granted) return;
    const bool isChosen = isAirplayChosen();
    const bool wasChosen = std::exchange(airplayWasChosen_, isChosen);
    if (!isChosen && !wasChosen) return;
    // A look that takes longer than the time between two is not asked for again meanwhile.
    if (isChosen && airplayBusy_.exchange(true)) return;
    airplayQueue_.post([this, isChosen] {
        if (isChosen) {
            to_.airplay.keepAlive();
            airplayBusy_ = false;
            return;
        }
        to_.airplay.reset();
        if (to_.receiver != nullptr) to_.receiver->stop();
    });
}

void Engine::stop() {
    if (stopping_.exchange(true)) return;
    matchAfterReconnect_.reset();
    airplayTimer_.reset();
    to_.gate.stop();
    to_.devices.stop();
    if (server_) {
        server_->stop();
        std::error_code ignored;
        std::filesystem::remove(to_.stateFile, ignored);
    }
    if (airplayServer_) airplayServer_->stop();
    to_.airplay.stop();
    airplayQueue_.stop();
    if (to_.receiver != nullptr) to_.receiver->stop();
    to_.capture.stop();
    to_.hid.stop();
}

void Engine::startBluetooth() {
    if (mode_.kind != EngineMode::Kind::own || bluetoothStarted_) return;
    bluetoothStarted_ = true;
    to_.hid.start();
}

void Engine::startScreens() {
    if (mode_.kind != EngineMode::Kind::own || screensStarted_) return;
    screensStarted_ = true;
    to_.capture.start();
}

void Engine::reconnect() {
    if (mode_.kind != EngineMode::Kind::own) return;
    log("engine: reconnect");
    if (bluetoothStarted_) to_.hid.restart();
    if (screensStarted_) to_.capture.restart();
    resetAirPlayCapture();
    matchAfterReconnect_ =
        to_.loop.after(kMatchAfterReconnect, [this] { to_.devices.scheduleMatch(); });
}

void Engine::letGo() {
    to_.devices.letGo();
    to_.hid.letGo();
}

std::string Engine::ownURL() const {
    return server_ ? fmt::format("http://127.0.0.1:{}", server_->port()) : settings_.baseURL();
}

std::string Engine::ownAirplayURL() const {
    return airplayServer_ ? fmt::format("http://127.0.0.1:{}", airplayServer_->port())
                          : settings_.baseAirplayURL();
}

bool Engine::paused() const { return to_.defaults.boolValue("paused").value_or(false); }

Result<void> Engine::setPaused(bool paused) { return to_.defaults.set("paused", paused); }

HTTPResponse Engine::handle(const HTTPRequest& request) {
    if (stopping_) return HTTPResponse::error("shutting down", 503);
    return routes_.handle(request);
}

void Engine::addStatus(Json& status) const {
    status["app"] = kOwnName;
    status["version"] = to_.info.version;
    status["paused"] = paused();
    status["paymentGuard"] = to_.gate.enabled();
    status["airplay"] = to_.airplay.summary();
    if (!to_.absences) return;
    if (const auto absences = to_.absences(); !absences.empty()) status["absent"] = absences;
}

HTTPResponse Engine::handleAirplay(const HTTPRequest& request) {
    if (stopping_) return HTTPResponse::error("shutting down", 503);
    if (request.path != "/quit") return to_.airplay.handle(request);
    resetAirPlayCapture();
    return HTTPResponse::json({{"ok", true}});
}

// Helpers that an AI app starts with a bare environment find the port here.
void Engine::writeStateFile() const {
    if (to_.stateFile.empty()) return;
    const Json state = {
        {"port", server_->port()},
        {"airplayPort", airplayServer_ ? airplayServer_->port() : settings_.airplayPort},
        {"pid", ::getpid()},
        {"version", to_.info.version}};
    if (const auto written = replaceFile(to_.stateFile, dumpJson(state) + "\n"); !written) {
        log("engine: " + written.error().message);
    }
}

}  // namespace tandrel
