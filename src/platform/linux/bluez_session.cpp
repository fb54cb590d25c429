#include "platform/linux/bluez_session.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/log.h"

namespace tandrel::bluez {
namespace {

// Reads and writes whose answers are awaited; more than any phone has at a time.
constexpr std::size_t kMostRequests = 256;

std::string nameOf(const Device& device) {
    return device.name.empty() ? device.address : device.name;
}

struct StateSentence {
    BluetoothState state;
    const char* sentence;
};

constexpr StateSentence kForbidden = {
    BluetoothState::unauthorized,
    "the system does not let this user use Bluetooth; an administrator can allow it with: "
    "sudo usermod -aG bluetooth \"$USER\""};
constexpr StateSentence kNotRunning = {
    BluetoothState::unsupported,
    "the Bluetooth service is not running; start it with: sudo systemctl start bluetooth"};
constexpr StateSentence kRestarting = {
    BluetoothState::resetting,
    "the Bluetooth service has stopped; if it stays away: sudo systemctl restart bluetooth"};
constexpr StateSentence kNoAdapter = {BluetoothState::unsupported,
                                      "this computer has no Bluetooth adapter; plug one in"};
constexpr StateSentence kNoPeripheral = {
    BluetoothState::unsupported,
    "this Bluetooth adapter cannot be a Bluetooth LE keyboard; plug in another one"};
constexpr StateSentence kOff = {
    BluetoothState::poweredOff,
    "Bluetooth is off; turn it on in the system's settings or with: bluetoothctl power on"};
constexpr StateSentence kOn = {BluetoothState::poweredOn, "Bluetooth is on"};

}  // namespace

Session::Session(sdbus::IConnection& bus, BusLoop& loop, SessionEvents& events, Options options)
    : bus_(bus),
      loop_(loop),
      events_(events),
      options_(std::move(options)),
      watch_(bus_, [this] { refresh(); }),
      agent_(bus_, [this](const std::string& device) { return mayPair(device); }),
      daemon_(sdbus::createProxy(bus_, kService, "/")) {
    watchSleep();
}

Session::~Session() = default;

// Adapters lose their advertisement when the computer sleeps, and some of them say nothing. While a
// phone is connected a new one would let a second phone in, so it waits until that one has left.
void Session::watchSleep() {
    bus_.addMatch(
        "type='signal',interface='org.freedesktop.login1.Manager',member='PrepareForSleep'",
        [this](sdbus::Message& message) {
            bool goingToSleep = true;
            try {
                message >> goingToSleep;
            } catch (const sdbus::Error&) {
                return;
            }
            if (goingToSleep) return;
            for (const auto& [adapter, registration] : registrations_) slept_.insert(adapter);
            refresh();
        },
        sdbus::floating_slot);
}

void Session::later(Duration delay, std::function<void()> task) {
    loop_.postAfter(delay, [task = std::move(task), alive = std::weak_ptr(alive_)] {
        if (!alive.expired()) task();
    });
}

// The same publication goes on as it is: new objects would get new handles, which a phone has to
// find out again.
void Session::publish(const Publication& publication) {
    if (publication_ != publication) {
        links_.clear();
        registrations_.clear();
        publication_ = publication;
    }
    for (auto& [adapter, registration] : registrations_) registration->startAdvertising();
    refresh();
    const bool advertised = std::ranges::any_of(
        registrations_, [](const auto& entry) { return entry.second->isAdvertised(); });
    if (advertised) events_.advertised(std::nullopt);
    for (const auto& [adapter, link] : links_) events_.linkIs(adapter, link);
}

void Session::stopAdvertising() {
    for (auto& [adapter, registration] : registrations_) registration->stopAdvertising();
}

void Session::refresh() {
    if (watch_.daemon() == Watch::Daemon::absent) {
        agentRegistered_ = false;
        pinging_ = false;
    }
    followAddresses();
    refreshRegistrations();
    for (const auto& [adapter, registration] : registrations_) refreshLink(*registration);
    refreshState();
    refreshAdapters();
    for (const Device& device : bonds_.newlyStale(watch_.objects(), systemClock().now())) {
        events_.advise(BondWatch::advice(device));
    }
}

// A phone comes with a passing address; pairing tells the lasting one of the same object.
void Session::followAddresses() {
    std::erase_if(addresses_, [this](const auto& entry) {
        return !watch_.objects().devices.contains(entry.first);
    });
    for (const auto& [path, device] : watch_.objects().devices) {
        std::string& known = addresses_[path];
        if (known != device.address && users_.contains(known)) users_.insert(device.address);
        known = device.address;
    }
}

bool Session::isChosen(const std::string& adapter) const {
    return options_.adapters.empty() || options_.adapters.contains(shortName(adapter));
}

void Session::refreshRegistrations() {
    const auto& adapters = watch_.objects().adapters;
    std::erase_if(registrations_, [&](const auto& entry) {
        const auto found = adapters.find(entry.first);
        if (found != adapters.end() && found->second.canBePeripheral) return false;
        if (links_.erase(entry.first) > 0) events_.linkIs(entry.first, std::nullopt);
        guesses_.erase(entry.first);
        return true;
    });
    if (!publication_ || watch_.daemon() != Watch::Daemon::present) return;
    if (!std::exchange(agentRegistered_, true)) agent_.registerAt();
    for (const auto& [path, adapter] : adapters) {
        if (!adapter.canBePeripheral || !isChosen(path)) continue;
        auto& registration = registrations_[path];
        if (!registration) {
            const auto report = [this](const std::optional<std::string>& error) {
                events_.advertised(error);
                refreshAdapters();
                if (!error || std::exchange(retrying_, true)) return;
                later(options_.retry, [this] {
                    retrying_ = false;
                    refresh();
                });
            };
            registration = std::make_unique<Registration>(
                bus_, path, *publication_, static_cast<GattRequests&>(*this), report);
        }
        if (!links_.contains(path) && slept_.erase(path) > 0) registration->readvertise();
        // A failed step waits for its retry.
        if (!retrying_ || !adapter.powered) registration->advance(adapter.powered);
    }
}

std::set<std::string> Session::usersAt(const std::string& adapter) const {
    const auto guess = guesses_.find(adapter);
    if (guess == guesses_.end()) return users_;
    const bool certain = std::ranges::any_of(watch_.objects().devices, [&](const auto& entry) {
        const Device& device = entry.second;
        return device.adapter == adapter && device.connected && users_.contains(device.address);
    });
    if (certain) return users_;
    auto users = users_;
    users.insert(guess->second);
    return users;
}

void Session::refreshLink(Registration& registration) {
    const std::string& adapter = registration.adapter();
    const auto& devices = watch_.objects().devices;
    const auto link = links_.find(adapter);
    const auto inUse = phoneInUse(watch_.objects(), adapter, usersAt(adapter),
                                  link == links_.end() ? "" : link->second.device);
    if (!inUse.others.empty() && link != links_.end()) {
        // Both hear it, and a release harms neither; a key held down could.
        registration.gatt().notifyReleased();
    }
    for (const std::string& device : inUse.others) {
        if (!farewells_.contains(device)) ++refusals_[adapter];
        sendAway(device, "another phone is connected");
    }
    std::erase_if(farewells_, [&](const auto& entry) {
        const auto found = devices.find(entry.first);
        return found == devices.end() || !found->second.connected;
    });
    setLink(registration, inUse.phone);
}

void Session::setLink(Registration& registration, const std::string& phone) {
    const std::string& adapter = registration.adapter();
    const auto found = links_.find(adapter);
    if (phone.empty()) {
        if (found == links_.end()) return;
        links_.erase(found);
        if (slept_.contains(adapter)) later({}, [this] { refresh(); });
        return events_.linkIs(adapter, std::nullopt);
    }
    PhoneLink link{phone, centralBehind(phone), 0, registration.gatt().notifying()};
    const bool same = found != links_.end() && found->second.device == phone &&
                      found->second.central == link.central;
    link.number = same ? found->second.number : ++lastLink_;
    if (same && found->second == link) return;
    links_[adapter] = link;
    if (!same) {
        untaken_.erase(adapter);
        // One that is just being paired may wait for its owner.
        if (watch_.objects().devices.at(phone).paired) {
            later(options_.deafness,
                  [this, adapter, number = link.number] { checkDeafness(adapter, number); });
        }
    }
    events_.linkIs(adapter, link);
}

// A daemon that was restarted has forgotten who subscribed to what, and a phone that thinks it is
// still subscribed hears nothing; a new connection lets it subscribe again.
void Session::checkDeafness(const std::string& adapter, std::uint64_t number) {
    const auto link = links_.find(adapter);
    if (link == links_.end() || link->second.number != number) return;
    const auto device = watch_.objects().devices.find(link->second.device);
    if (device == watch_.objects().devices.end()) return;
    if (!link->second.listens.empty()) {
        deaf_.erase(device->second.address);
        return;
    }
    if (deaf_.insert(device->second.address).second) {
        return sendAway(device->first, "it does not listen to the keyboard");
    }
    events_.advise(
        fmt::format("{0} is connected but does not listen to the keyboard. On the phone, "
                    "forget this computer in Settings > Bluetooth; here, run \"bluetoothctl remove "
                    "{1}\"; then pair again",
                    nameOf(device->second), device->second.address));
}

void Session::sendAway(const std::string& device, const char* why) {
    if (farewells_.contains(device)) return;
    events_.advise(
        fmt::format("{} was disconnected: {}", nameOf(watch_.objects().devices.at(device)), why));
    auto& proxy = farewells_[device];
    proxy = sdbus::createProxy(bus_, kService, device);
    proxy->callMethodAsync("Disconnect")
        .onInterface(kDevice)
        .uponReplyInvoke([this, device](const sdbus::Error* error) {
            if (error == nullptr) return;
            log("bluetooth: " + shortName(device) + " stays connected: " + error->getMessage());
            later(options_.retry, [this, device] {
                farewells_.erase(device);
                refresh();
            });
        });
}

void Session::refreshState() {
    const auto& adapters = watch_.objects().adapters;
    const auto state = [&]() -> std::optional<StateSentence> {
        switch (watch_.daemon()) {
            case Watch::Daemon::unknown:
                return std::nullopt;
            case Watch::Daemon::absent:
                return wasPresent_ ? kRestarting : kNotRunning;
            case Watch::Daemon::starting:
                return watch_.isForbidden() ? std::optional(kForbidden) : std::nullopt;
            case Watch::Daemon::present:
                break;
        }
        wasPresent_ = true;
        bool any = false, usable = false, powered = false;
        for (const auto& [path, adapter] : adapters) {
            if (!isChosen(path)) continue;
            any = true;
            usable = usable || adapter.canBePeripheral;
            powered = powered || (adapter.canBePeripheral && adapter.powered);
        }
        return !any ? kNoAdapter : !usable ? kNoPeripheral : powered ? kOn : kOff;
    }();
    if (!state) return;
    const auto now = std::pair(state->state, std::string(state->sentence));
    if (lastState_ == now) return;
    lastState_ = now;
    events_.stateIs(now.first, now.second);
}

void Session::refreshAdapters() {
    std::vector<BluetoothAdapter> now;
    for (const auto& [path, adapter] : watch_.objects().adapters) {
        if (!isChosen(path)) continue;
        const auto registration = registrations_.find(path);
        const auto link = links_.find(path);
        const auto refusals = refusals_.find(path);
        BluetoothAdapter report{.name = shortName(path),
                                .canBePeripheral = adapter.canBePeripheral,
                                .powered = adapter.powered,
                                .advertising = registration != registrations_.end() &&
                                               registration->second->isAdvertised(),
                                .phone = {},
                                .paired = {},
                                .refusals = refusals == refusals_.end() ? 0 : refusals->second};
        for (const auto& [devicePath, device] : watch_.objects().devices) {
            if (device.adapter != path || device.isAccessory) continue;
            if (device.paired) report.paired.push_back(nameOf(device));
            if (link != links_.end() && link->second.device == devicePath) {
                report.phone = nameOf(device);
            }
        }
        now.push_back(std::move(report));
    }
    if (now == lastAdapters_) return;
    lastAdapters_ = now;
    events_.adaptersAre(now);
}

// One that asks while another phone is connected wants our keyboard and can't have it: it is sent
// away like one that has used our services.
bool Session::mayPair(const std::string& device) {
    const auto& devices = watch_.objects().devices;
    const auto asking = devices.find(device);
    if (asking == devices.end() || !registrations_.contains(asking->second.adapter)) return false;
    const auto users = usersAt(asking->second.adapter);
    const bool isTaken = std::ranges::any_of(devices, [&](const auto& entry) {
        return entry.first != device && entry.second.adapter == asking->second.adapter &&
               entry.second.connected && users.contains(entry.second.address);
    });
    if (isTaken) later({}, [this, device] { usedBy(device); });
    return !isTaken;
}

void Session::usedBy(const std::string& device) {
    const auto found = watch_.objects().devices.find(device);
    if (found == watch_.objects().devices.end()) return;
    if (users_.insert(found->second.address).second) refresh();
}

// The one connected device that is no accessory; empty when there is none or more than one.
std::string Session::guessUser(const std::string& adapter) const {
    std::string address;
    for (const auto& [path, device] : watch_.objects().devices) {
        if (device.adapter != adapter || !device.connected || device.isAccessory) continue;
        if (!address.empty()) return "";
        address = device.address;
    }
    return address;
}

// The daemon does not say who subscribed. Whoever read from us has given itself away; a phone that
// remembers our services from last time reads nothing.
void Session::notifyingChanged() {
    for (const auto& [adapter, registration] : registrations_) {
        if (registration->gatt().notifying().empty()) {
            guesses_.erase(adapter);
        } else if (const std::string user = guessUser(adapter); !user.empty()) {
            guesses_[adapter] = user;
        }
    }
    refresh();
}

Uuid Session::centralBehind(const std::string& device) const {
    const auto found = watch_.objects().devices.find(device);
    return centralOf(found == watch_.objects().devices.end() ? device : found->second.address);
}

void Session::notify(const std::string& adapter, std::uint64_t number,
                     CharacteristicId characteristic, const Bytes& value) {
    const auto link = links_.find(adapter);
    const auto registration = registrations_.find(adapter);
    if (link == links_.end() || link->second.number != number ||
        registration == registrations_.end() ||
        !registration->second->gatt().notify(characteristic, value)) {
        return events_.taken(adapter, 1);
    }
    ++untaken_[adapter];
    ping();
}

// The daemon answers in the order in which it is spoken to, so its answer tells that it has taken
// all reports of before.
void Session::ping() {
    if (pinging_ || untaken_.empty()) return;
    pinging_ = true;
    daemon_->callMethodAsync("Ping").onInterface(kPeer).uponReplyInvoke(
        [this, taken = untaken_](const sdbus::Error* error) {
            pinging_ = false;
            const bool noAnswer =
                error != nullptr && (error->getName() == "org.freedesktop.DBus.Error.NoReply" ||
                                     error->getName() == "org.freedesktop.DBus.Error.Timeout");
            if (noAnswer) {
                log("bluetooth: bluetoothd does not answer");
                return ping();  // paced by the time-out
            }
            for (const auto& [adapter, count] : taken) {
                const auto left = untaken_.find(adapter);
                if (left == untaken_.end()) continue;
                left->second -= count;
                if (left->second <= 0) untaken_.erase(left);
                events_.taken(adapter, count);
            }
            ping();
        });
}

void Session::read(const std::string& device, CharacteristicId characteristic, std::size_t offset,
                   ValueResult result) {
    if (reads_.size() >= kMostRequests) {
        return result.returnError(
            sdbus::Error("org.bluez.Error.InProgress", "too many requests at once"));
    }
    reads_.emplace(++lastRequest_, std::move(result));
    events_.read(lastRequest_, {centralBehind(device), characteristic, offset});
}

void Session::write(const std::string& device, CharacteristicId characteristic, Bytes value,
                    DoneResult result) {
    if (writes_.size() >= kMostRequests) {
        return result.returnError(
            sdbus::Error("org.bluez.Error.InProgress", "too many requests at once"));
    }
    writes_.emplace(++lastRequest_, std::move(result));
    events_.write(lastRequest_, {centralBehind(device), characteristic, std::move(value)});
}

void Session::answerRead(std::uint64_t number, const GattReadReply& reply) {
    auto pending = reads_.extract(number);
    if (pending.empty()) return;
    switch (reply.error) {
        case AttError::none:
            return pending.mapped().returnResults(reply.value);
        case AttError::invalidOffset:
            return pending.mapped().returnError(
                sdbus::Error("org.bluez.Error.InvalidOffset", "the value is shorter"));
        case AttError::attributeNotFound:
            break;
    }
    pending.mapped().returnError(
        sdbus::Error("org.bluez.Error.NotSupported", "there is no such value"));
}

void Session::answerWrite(std::uint64_t number, AttError error) {
    auto pending = writes_.extract(number);
    if (pending.empty()) return;
    if (error == AttError::none) return pending.mapped().returnResults();
    pending.mapped().returnError(sdbus::Error("org.bluez.Error.Failed", "the value is not taken"));
}

}  // namespace tandrel::bluez
