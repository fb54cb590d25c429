#include "devices/devices.h"

#include <algorithm>
#include <cassert>

#include <fmt/format.h>

#include "base/log.h"

namespace tandrel {
namespace {

constexpr Duration kSettleBeforeMatch = std::chrono::milliseconds(1500);

Devices* sharedDevices = nullptr;

using Screens = std::vector<std::shared_ptr<Screen>>;

// Those whose phone their link tells, or the others.
enum class Whose { told, foundOut };
Screens shown(Whose whose, Screens screens) {
    std::erase_if(screens, [whose](const auto& screen) {
        return tellsWhose(screen->link()) != (whose == Whose::told);
    });
    return screens;
}

std::optional<Uuid> pairedHost(const Pairings& pairings, const Screen& screen) {
    const auto paired = pairings.find(screen.id());
    return paired == pairings.end() ? std::nullopt : std::optional(paired->second);
}

bool contains(const std::vector<Uuid>& hosts, const std::optional<Uuid>& host) {
    return host && std::ranges::count(hosts, *host) > 0;
}

}  // namespace

Devices& Devices::shared() {
    assert(sharedDevices != nullptr);
    return *sharedDevices;
}

void Devices::setShared(Devices* instance) { sharedDevices = instance; }

Devices::Devices(HIDPeripheral& hid, ScreenCapture& screens, Options options, Clock& clock)
    : hid_(hid),
      screens_(screens),
      options_(std::move(options)),
      clock_(clock),
      use_(clock),
      matcher_([this](const Uuid& host) { return input(host); }, use_, clock),
      matchQueue_("pocketlink.match", clock) {}

Devices::~Devices() { stop(); }

void Devices::start() {
    Pairings loaded = loadPairings(options_.pairingsFile);
    {
        MutexLock lock(mutex_);
        pairings_ = std::move(loaded);
    }
    hid_.setOnHostsChanged([this] { scheduleMatch(); });
    screens_.setOnScreensChanged([this] { scheduleMatch(); });
}

void Devices::stop() {
    stopping_.request_stop();
    hid_.setOnHostsChanged({});
    screens_.setOnScreensChanged({});
    std::map<Uuid, std::shared_ptr<Input>> inputs;
    {
        MutexLock lock(mutex_);
        inputs = inputs_;
    }
    for (const auto& [host, input] : inputs) input->stop();
    matchQueue_.stop();
}

// Later actions get an input of their own.
void Devices::letGo() {
    std::map<Uuid, std::shared_ptr<Input>> inputs;
    {
        MutexLock lock(mutex_);
        inputs.swap(inputs_);
    }
    for (const auto& [host, input] : inputs) input->stop();
}

// A host drives one phone: where the pairings give it to two screens that are present, only the
// first has it, since an action judged by the picture of one phone must not reach the other.
std::vector<Device> Devices::list(const std::vector<Uuid>& hosts) {
    const Screens screens = screens_.all();
    MutexLock lock(mutex_);
    std::vector<Device> devices;
    std::vector<Uuid> freeHosts = hosts;
    for (const auto& screen : shown(Whose::told, screens)) {
        std::optional<Uuid> host = pairedHost(pairings_, *screen);
        if (!host || std::erase(freeHosts, *host) == 0) host.reset();
        devices.push_back({screen, host});
    }
    const bool isCabled = !devices.empty();
    const Screens untold = shown(Whose::foundOut, screens);
    const bool isOnlyOne = !isCabled && untold.size() == 1 && hosts.size() == 1;
    for (const auto& screen : untold) {
        std::optional<Uuid> host = pairedHost(mirroredPairings_, *screen);
        if (!host && isOnlyOne) host = hosts.front();
        if (!host || std::erase(freeHosts, *host) == 0) host.reset();
        if (isCabled && !host) continue;
        devices.push_back({screen, host});
    }
    return devices;
}

std::vector<Device> Devices::all() { return list(hid_.connectedHosts()); }

std::vector<Uuid> Devices::unmatchedHosts() {
    std::vector<Uuid> hosts = hid_.connectedHosts();
    for (const Device& device : list(hosts)) {
        if (device.host) std::erase(hosts, *device.host);
    }
    return hosts;
}

Result<Device> Devices::find(const std::string& wanted) { return findDevice(all(), wanted); }

Result<Uuid> Devices::hostOf(const Device& device) {
    if (device.host) return *device.host;
    TRY_VOID(match({}));
    for (const Device& now : all()) {
        if (now.id() == device.id() && now.host) return *now.host;
    }
    if (!unmatchedHosts().empty()) {
        return fail("could not tell which Bluetooth connection is " + device.name() +
                    ": unlock it, check AssistiveTouch is on, then POST /match");
    }
    return fail(fmt::format("{} has no Bluetooth connection: pair \"{}\" in its Bluetooth settings",
                            device.name(), hid_.localName()));
}

std::shared_ptr<Input> Devices::input(const Uuid& host) {
    MutexLock lock(mutex_);
    auto& input = inputs_[host];
    if (!input) input = std::make_shared<Input>(hid_, host, clock_);
    return input;
}

Result<void> Devices::pair(const Device& device, const Uuid& host) {
    if (!tellsWhose(device.screen->link())) {
        MutexLock lock(mutex_);
        mirroredPairings_[device.id()] = host;
        return {};
    }
    MutexLock oneStore(fileMutex_);
    return storePairings(options_.pairingsFile, pairOnly({{device.id(), host}}));
}

Pairings Devices::pairOnly(const Pairings& made) {
    const auto screens = screens_.all();
    MutexLock lock(mutex_);
    for (const auto& [id, host] : made) {
        for (const auto& screen : screens) {
            const auto before = pairings_.find(screen->id());
            if (before != pairings_.end() && before->second == host) pairings_.erase(before);
        }
        pairings_[id] = host;
    }
    return pairings_;
}

void Devices::keep(const Pairings& made) {
    MutexLock oneStore(fileMutex_);
    const Pairings current = pairOnly(made);
    std::string line = "matched";
    for (const auto& [screen, host] : made) line += fmt::format(" {}={}", screen, host.text());
    log(line);
    if (const auto stored = storePairings(options_.pairingsFile, current); !stored) {
        log("pairings not kept: " + stored.error().message);
    }
}

Result<Pairings> Devices::match(const Match& how) {
    if (stopping_.stop_requested()) return fail("shutting down", 503);
    const MatchOptions options{.force = how.force,
                               .alwaysProbe = how.probe,
                               .mayMove = options_.mayMove(),
                               .patience = how.patience};
    const MatchOutcome outcome = matchQueue_.sync([&] {
        matchQueue_.assertCurrent();
        return runMatch(options);
    });
    if (outcome.busy && outcome.made.empty()) {
        return fail("Not done: an action is under way on the iPhone. Try again in a minute.", 409);
    }
    return outcome.made;
}

MatchOutcome Devices::runMatch(const MatchOptions& options) {
    const Screens screens = screens_.all();
    const std::vector<Uuid> hosts = hid_.connectedHosts();
    MatchOutcome outcome = matchCabled(screens, hosts, options);
    const MatchOutcome mirrored = matchMirrored(screens, hosts, options);
    outcome.made.insert(mirrored.made.begin(), mirrored.made.end());
    outcome.busy = outcome.busy || mirrored.busy;
    return outcome;
}

// The same phone may be seen both ways, and its pointer moves in both pictures; the cable, which
// shows more, is matched first and by itself.
MatchOutcome Devices::matchCabled(const Screens& screens, const std::vector<Uuid>& hosts,
                                  MatchOptions options) {
    MatchSituation situation{shown(Whose::told, screens), hosts, {}};
    {
        MutexLock lock(mutex_);
        situation.pairings = pairings_;
        // Being the only one left says nothing about a host that is known to be a mirrored phone's.
        for (const auto& screen : shown(Whose::foundOut, screens)) {
            if (contains(hosts, pairedHost(mirroredPairings_, *screen))) options.alwaysProbe = true;
        }
    }
    MatchOutcome outcome = matcher_.run(std::move(situation), options, stopping_.get_token());
    if (!outcome.made.empty()) keep(outcome.made);
    return outcome;
}

MatchOutcome Devices::matchMirrored(const Screens& screens, const std::vector<Uuid>& hosts,
                                    MatchOptions options) {
    MatchSituation situation{shown(Whose::foundOut, screens), hosts, {}};
    const Screens cabled = shown(Whose::told, screens);
    const bool isOnly = cabled.empty() && situation.screens.size() == 1 && hosts.size() == 1;
    if (situation.screens.empty() || (isOnly && !options.alwaysProbe)) return {};
    {
        MutexLock lock(mutex_);
        situation.pairings = mirroredPairings_;
        for (const auto& screen : cabled) {
            if (const auto host = pairedHost(pairings_, *screen))
                std::erase(situation.hosts, *host);
        }
    }
    options.alwaysProbe = true;
    MatchOutcome outcome = matcher_.run(std::move(situation), options, stopping_.get_token());
    if (!outcome.made.empty()) keepMirrored(outcome.made);
    return outcome;
}

void Devices::keepMirrored(const Pairings& made) {
    std::string line = "matched";
    for (const auto& [screen, host] : made) line += fmt::format(" {}={}", screen, host.text());
    log(line);
    MutexLock lock(mutex_);
    for (const auto& [screen, host] : made) mirroredPairings_[screen] = host;
}

void Devices::scheduleMatch() {
    if (stopping_.stop_requested()) return;
    {
        MutexLock lock(mutex_);
        if (std::exchange(scheduled_, true)) return;
    }
    matchQueue_.postAfter(kSettleBeforeMatch, [this] {
        matchQueue_.assertCurrent();
        {
            MutexLock lock(mutex_);
            scheduled_ = false;
        }
        // An action under way is not waited for here: it would hold up requests that need a match.
        if (runMatch({.mayMove = options_.mayMove()}).busy) scheduleMatch();
    });
}

}  // namespace tandrel
