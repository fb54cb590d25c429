#include "engine/routes.h"

#include <cmath>

#include "engine/pictures.h"
#include "screen/settle.h"

namespace tandrel {
namespace {

constexpr std::string_view kPaused =
    "Tandrel is paused: the owner turned off control in the Tandrel menu (menu bar › Resume "
    "control)";
constexpr std::string_view kChanged =
    "Not done: the iPhone or its connection changed while Tandrel was checking this action. Read "
    "the screen again (screenshot) and repeat.";
constexpr std::string_view kBusy =
    "Not done: Tandrel is finding out which iPhone is which right now. Try again in a minute.";
// A matching run takes a little over a second a phone.
constexpr Duration kMatchPatience = std::chrono::seconds(30);

// An action shows in the picture as soon as the phone has drawn it and the picture has come here;
// then a page may slide in. Pictures that never stand still are judged after `max`. Milliseconds.
constexpr SettleOptions kEffect{.min = 400, .quiet = 200, .max = 1500, .first = 400};

// The longest that one action can take: the owner's time to answer, twice bounded, and its reports.
constexpr Duration kActionPatience = std::chrono::seconds(150);

constexpr auto kAllowed = Routes::WhilePaused::allowed;
constexpr auto kRefused = Routes::WhilePaused::refused;

double millisecondsNow(const Clock& clock) {
    return std::chrono::duration<double, std::milli>(clock.wallNow().time_since_epoch()).count();
}

std::optional<PlaceOnScreen> pointerOf(const ActionTarget& target) {
    const auto place = target.input->pointer();
    if (!place) return std::nullopt;
    return PlaceOnScreen{place->x, place->y};
}

Json toJson(const BluetoothAdapter& adapter) {
    Json json = {{"name", adapter.name},       {"peripheral", adapter.canBePeripheral},
                 {"powered", adapter.powered}, {"advertising", adapter.advertising},
                 {"paired", adapter.paired},   {"refusedPhones", adapter.refusals}};
    if (!adapter.phone.empty()) json["phone"] = adapter.phone;
    return json;
}

}  // namespace

std::span<const Routes::Row> Routes::table() {
    // clang-format off
    static constexpr Row rows[] = {
        // method  path           while paused  reply
        {"GET",  "/status",     kAllowed, &Routes::status},
        {"GET",  "/",           kAllowed, &Routes::status},
        {"GET",  "/devices",    kAllowed, &Routes::devices},
        {"POST", "/match",      kRefused, &Routes::match},
        {"POST", "/pair",       kAllowed, &Routes::pair},
        {"GET",  "/screenshot", kAllowed, &Routes::picture},
        {"GET",  "/look",       kAllowed, &Routes::lookAt},
        {"GET",  "/settle",     kAllowed, &Routes::settle},
        {"POST", "/tap",        kRefused, &Routes::act},
        {"POST", "/swipe",      kRefused, &Routes::act},
        {"POST", "/move",       kRefused, &Routes::act},
        {"POST", "/nudge",      kRefused, &Routes::act},
        {"POST", "/type",       kRefused, &Routes::act},
        {"POST", "/key",        kRefused, &Routes::act},
        {"POST", "/home",       kRefused, &Routes::act},
    };
    // clang-format on
    return rows;
}

HTTPResponse Routes::handle(const HTTPRequest& request) {
    for (const Row& row : table()) {
        if (row.method != request.method || row.path != request.path) continue;
        if (row.whilePaused == kRefused && to_.paused()) return HTTPResponse::error(kPaused, 423);
        return (this->*row.reply)(request);
    }
    return HTTPResponse::error("not found", 404);
}

Json Routes::phones() {
    Json unmatched = Json::array();
    for (const Uuid& host : to_.devices.unmatchedHosts()) unmatched.push_back(host.text());
    return {{"devices", toJson(to_.devices.all())}, {"unmatchedHosts", std::move(unmatched)}};
}

HTTPResponse Routes::status(const HTTPRequest&) {
    Json reply = phones();
    reply["bluetooth"] = to_.hid.state();
    if (auto advice = to_.hid.advice(); !advice.empty()) {
        reply["bluetoothAdvice"] = std::move(advice);
    }
    for (const BluetoothAdapter& adapter : to_.hid.adapters()) {
        reply["bluetoothAdapters"].push_back(toJson(adapter));
    }
    reply["hosts"] = Json::array();
    for (const Uuid& host : to_.hid.connectedHosts()) reply["hosts"].push_back(host.text());
    reply["hostInput"] = true;
    reply["screenState"] = name(PhoneScreen::unknown);
    if (const auto last = to_.reader.lastState()) {
        reply["screenState"] = name(last->state);
        reply["screenStateAge"] = std::round(last->ageSeconds * 10) / 10;
        reply["screenStateDevice"] = last->deviceId;
    }
    if (const auto left = to_.gate.asking()) reply["asking"] = std::round(*left * 10) / 10;
    to_.addStatus(reply);
    return HTTPResponse::json(reply);
}

HTTPResponse Routes::devices(const HTTPRequest&) {
    return HTTPResponse::json({{"devices", toJson(to_.devices.all())}});
}

HTTPResponse Routes::match(const HTTPRequest& request) {
    const auto made = to_.devices.match({.force = boolMember(request.body, "force").value_or(false),
                                         .probe = boolMember(request.body, "probe").value_or(false),
                                         .patience = kActionPatience});
    if (!made) return HTTPResponse::error(made.error());
    Json reply = phones();
    reply["matched"] = Json::object();
    for (const auto& [screen, host] : *made) reply["matched"][screen] = host.text();
    return HTTPResponse::json(reply);
}

HTTPResponse Routes::pair(const HTTPRequest& request) {
    const auto host = Uuid::parse(textMember(request.body, "host").value_or(""));
    if (!host) return HTTPResponse::error("host is required (a UUID from unmatchedHosts)");
    const auto device = to_.devices.find(wantedDevice(request));
    if (!device) return HTTPResponse::error(device.error());
    if (const auto kept = to_.devices.pair(*device, *host); !kept) {
        return HTTPResponse::error("Paired until Tandrel ends, since " + kept.error().message, 500);
    }
    return devices(request);
}

HTTPResponse Routes::picture(const HTTPRequest& request) {
    const auto device = to_.devices.find(wantedDevice(request));
    if (!device) return HTTPResponse::error(device.error());
    const auto options = parseSnapshotOptions(request);
    return options ? screenshot(*device, *options) : HTTPResponse::error(options.error());
}

HTTPResponse Routes::lookAt(const HTTPRequest& request) {
    const auto device = to_.devices.find(wantedDevice(request));
    if (!device) return HTTPResponse::error(device.error());
    const auto options = parseSnapshotOptions(request);
    if (!options) return HTTPResponse::error(options.error());
    return look(*device, *options, to_.reader,
                [this](const std::vector<std::string>& seen) { to_.gate.saw(seen); });
}

HTTPResponse Routes::settle(const HTTPRequest& request) {
    const auto device = to_.devices.find(wantedDevice(request));
    if (!device) return HTTPResponse::error(device.error());
    if (!device->screen->latest()) {
        return HTTPResponse::error("no frame yet from " + device->name() + ": unlock it", 503);
    }
    const auto changes = [screen = device->screen](double since) {
        return screen->changeTimes(since);
    };
    const auto options = SettleOptions::fromQuery(request.query, millisecondsNow(to_.clock));
    return HTTPResponse::json(waitToSettle(changes, options, to_.clock, request.clientGone).json());
}

HTTPResponse Routes::act(const HTTPRequest& request) {
    const auto target = resolveTarget(to_.devices, to_.hid, request);
    if (!target) return HTTPResponse::error(target.error());
    const auto action = parseAction(request.path, request.body, *target);
    if (!action) return HTTPResponse::error(action.error());
    const auto hold = to_.devices.use().act(target->host, kMatchPatience, request.clientGone);
    if (!hold) return HTTPResponse::error(kBusy, 409);
    return to_.gate.run(request, {.settle = [&] { awaitEffect(*target, request.clientGone); },
                                  .read = [&] { return guardFrame(*target, request.clientGone); },
                                  .perform = [&] { return performOn(*target, *action); },
                                  .pointer = [&] { return pointerOf(*target); }});
}

void Routes::awaitEffect(const ActionTarget& target, const std::stop_token& clientGone) {
    const auto ended = lastActions_.of(target.host);
    if (!ended || !target.device) return;
    const double ago = toSeconds(to_.clock.now() - *ended) * 1000;
    if (ago >= kEffect.max) return;
    SettleOptions options = kEffect;
    options.since = millisecondsNow(to_.clock) - ago;
    const auto changes = [screen = target.device->screen](double since) {
        return screen->changeTimes(since);
    };
    waitToSettle(changes, options, to_.clock, clientGone);
}

ScreenReading Routes::guardFrame(const ActionTarget& target, const std::stop_token& clientGone) {
    if (!target.device) return NoFrame{};
    // Another action may have come between.
    awaitEffect(target, clientGone);
    if (!isUnchanged(target, to_.devices, to_.hid)) return Error{std::string(kChanged), 409};
    auto frame = target.device->screen->frame();
    if (!frame) return NoFrame{};
    const PaymentGuard::FrameSize size{static_cast<double>(frame->width()),
                                       static_cast<double>(frame->height())};
    auto text = to_.reader.read(target.device->id(), *frame);
    return screenReading(std::move(*frame), std::move(text), size);
}

HTTPResponse Routes::performOn(const ActionTarget& target, const PhoneAction& action) {
    // The owner may have paused while the action waited for its turn or for an answer.
    if (to_.paused()) return HTTPResponse::error(kPaused, 423);
    if (!isUnchanged(target, to_.devices, to_.hid)) return HTTPResponse::error(kChanged, 409);
    const auto done = perform(action, *target.input);
    if (pressesSomething(action)) lastActions_.note(target.host, to_.clock.now());
    if (!done) return HTTPResponse::error(done.error());
    return HTTPResponse::json({{"ok", true}, {"device", target.id()}});
}

}  // namespace tandrel
