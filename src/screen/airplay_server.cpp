#include "screen/airplay_server.h"

#include <algorithm>
#include <array>
#include <cmath>

#include <unistd.h>

#include "base/log.h"
#include "screen/airplay_frame.h"
#include "screen/settle.h"
#include "screen/window_search.h"

namespace tandrel {
namespace {

constexpr const char* kNoCapture = "no capture";
double millisecondsNow(const Clock& clock) { return millisecondsSince1970(clock.wallNow()); }

// The newest frame of a running capture, as /status tells of it.
void addPicture(Json& reply, WindowCapture& capture, const Clock& clock) {
    reply["window"] = capture.info().json();
    reply["frames"] = capture.frames();
    const auto latest = capture.latest();
    if (!latest) return;
    reply["frame"] = {{"w", latest->frame.width()}, {"h", latest->frame.height()}};
    reply["age_ms"] = std::round(latest->ageSeconds * 1000);
    reply["content"] = capture.content(latest->frame).json();
    const std::vector<double> changes = capture.changeTimes(0);
    if (!changes.empty()) {
        reply["still_ms"] = std::round(std::max(millisecondsNow(clock) - changes.back(), 0.0));
    }
}

Json receiverJson(const ReceiverStatus& status) {
    Json json = {{"state", name(status.state)}, {"name", status.name}};
    if (!status.error.empty()) json["error"] = status.error;
    return json;
}

// Whether another window is the likelier one now.
bool isOutdone(const WinInfo& window, const std::vector<WinInfo>& candidates) {
    const auto now = std::ranges::find(candidates, window.id, &WinInfo::id);
    const int score = now == candidates.end() ? 0 : now->score;
    return candidates.front().score > score;
}

}  // namespace

AirPlayServer::AirPlayServer(Services services, std::optional<std::uint32_t> windowId)
    : to_(std::move(services)), windowId_(windowId) {}

AirPlayServer::~AirPlayServer() { stop(); }

std::shared_ptr<WindowCapture> AirPlayServer::current() const {
    MutexLock lock(mutex_);
    return capture_ && capture_->isRunning() ? capture_ : nullptr;
}

std::optional<std::string> AirPlayServer::lastError() const {
    MutexLock lock(mutex_);
    return lastError_;
}

void AirPlayServer::keepError(const std::optional<std::string>& error) {
    MutexLock lock(mutex_);
    lastError_ = error;
}

Result<std::shared_ptr<WindowCapture>> AirPlayServer::capture() {
    if (auto running = current()) return running;
    MutexLock one(starting_);
    if (auto running = current()) return running;
    if (stopped_) return fail("shutting down", 503);
    auto started = startCapture();
    if (!started) keepError(reasonFor(started.error()));
    return started;
}

Result<std::shared_ptr<WindowCapture>> AirPlayServer::startCapture() {
    WinInfo window = TRY(pickWindow(to_.windows, windowId_));
    const std::uint32_t id = window.id;
    auto made = std::make_shared<WindowCapture>(to_.windows, std::move(window), to_.clock,
                                                [this] { tellChanged(); });
    if (const auto started = made->start(); !started) {
        if (!started.error().message.empty()) return std::unexpected(started.error());
        return fail("cannot capture window " + std::to_string(id), 503);
    }
    std::shared_ptr<WindowCapture> former = made;
    {
        MutexLock lock(mutex_);
        capture_.swap(former);
        lastError_.reset();
    }
    log("airplay: capturing window " + std::to_string(id) + " of " + made->info().owner);
    if (former) former->stop();
    tellChanged();
    return made;
}

void AirPlayServer::reset() {
    std::shared_ptr<WindowCapture> ended;
    {
        MutexLock lock(mutex_);
        ended.swap(capture_);
    }
    if (!ended) return;
    ended->stop();
    tellChanged();
}

void AirPlayServer::stop() {
    {
        MutexLock one(starting_);
        stopped_ = true;
    }
    setOnPictureChanged({});
    reset();
}

// What a receiver of our own knows says more than that there is no window.
std::string AirPlayServer::reasonFor(const Error& error) const {
    if (to_.receiver == nullptr || windowId_) return error.message;
    const ReceiverStatus receiver = to_.receiver->status();
    if (!receiver.error.empty()) return receiver.error;
    if (receiver.state != ReceiverStatus::State::waiting) return error.message;
    return "no iPhone is mirroring its screen: on the iPhone open Control Center › Screen "
           "Mirroring › " +
           receiver.name;
}

void AirPlayServer::keepAlive() {
    const auto running = current();
    const bool isSure = running && (windowId_ || running->info().score >= kTrustedScore);
    if (isSure && !running->trouble()) return;
    const auto candidates = airplayCandidates(to_.windows);
    const bool isFound = candidates && !candidates->empty();
    const bool isTrusted = isFound && candidates->front().score >= kTrustedScore;
    if (!isTrusted && to_.receiver != nullptr && !windowId_) to_.receiver->start();
    if (running && !(isFound && !windowId_ && isOutdone(running->info(), *candidates))) return;
    reset();
    const auto ignored = capture();  // its error is kept
}

void AirPlayServer::setOnPictureChanged(std::function<void()> changed) {
    MutexLock lock(changedMutex_);
    changed_ = std::move(changed);
}

void AirPlayServer::tellChanged() {
    MutexLock lock(changedMutex_);
    if (changed_) changed_();
}

Json AirPlayServer::summary() const {
    Json reply = Json::object();
    if (const auto running = current()) {
        reply["window"] = running->info().title;
        if (const auto trouble = running->trouble()) reply["error"] = *trouble;
    } else if (const auto error = lastError()) {
        reply["error"] = *error;
    }
    if (to_.receiver != nullptr) reply["receiver"] = receiverJson(to_.receiver->status());
    return reply;
}

HTTPResponse AirPlayServer::handle(const HTTPRequest& request) {
    struct Row {
        std::string_view path;
        HTTPResponse (AirPlayServer::*reply)(const HTTPRequest& request);
    };
    // clang-format off
    static constexpr std::array rows{
        Row{"/status",    &AirPlayServer::status},
        Row{"/frame",     &AirPlayServer::frame},
        Row{"/frame.png", &AirPlayServer::frame},
        Row{"/frame.jpg", &AirPlayServer::frame},
        Row{"/wait",      &AirPlayServer::wait},
        Row{"/changes",   &AirPlayServer::changes},
    };
    // clang-format on
    for (const Row& row : rows) {
        if (row.path == request.path) return (this->*row.reply)(request);
    }
    return airplayError("not found", 404);
}

HTTPResponse AirPlayServer::status(const HTTPRequest&) {
    Json reply = {{"app", to_.app},
                  {"version", to_.version},
                  {"pid", ::getpid()},
                  {"permission", to_.mayRecord()},
                  {"candidates", Json::array()}};
    std::optional<std::string> error = lastError();
    const auto candidates = airplayCandidates(to_.windows);
    if (!candidates) {
        error = reasonFor(candidates.error());
    } else if (candidates->empty() && !windowId_) {
        error = reasonFor(Error{kNoMirroringWindow});
    }
    if (candidates) {
        for (const WinInfo& window : *candidates) reply["candidates"].push_back(window.json());
    }
    if (const auto running = current()) {
        addPicture(reply, *running, to_.clock);
        error = running->trouble();
    }
    if (error) reply["error"] = *error;
    if (to_.receiver != nullptr) {
        const ReceiverStatus receiver = to_.receiver->status();
        reply["receiver"] = receiverJson(receiver);
    }
    return HTTPResponse::json(reply);
}

HTTPResponse AirPlayServer::frame(const HTTPRequest& request) {
    const auto options = AirPlayFrameOptions::parse(request);
    if (!options) return airplayError(options.error().message, options.error().status);
    const auto running = capture();
    if (!running) return airplayError(lastError().value_or(kNoCapture), 503);
    return airplayFrame(**running, *options, to_.recognizer, request.clientGone);
}

HTTPResponse AirPlayServer::wait(const HTTPRequest& request) {
    const auto running = capture();
    if (!running) return airplayError(lastError().value_or(kNoCapture), 503);
    const auto source = [&running](double since) { return (*running)->changeTimes(since); };
    const auto options = SettleOptions::fromQuery(request.query, millisecondsNow(to_.clock));
    Json reply = waitToSettle(source, options, to_.clock, request.clientGone).json();
    reply["ok"] = true;
    return HTTPResponse::json(reply);
}

HTTPResponse AirPlayServer::changes(const HTTPRequest& request) {
    const auto running = capture();
    if (!running) return airplayError(lastError().value_or(kNoCapture), 503);
    const double since = numberIn(request.query, "since").value_or(0);
    return HTTPResponse::json({{"ok", true},
                               {"now", millisecondsNow(to_.clock)},
                               {"changes", (*running)->changeTimes(since)}});
}

}  // namespace tandrel
