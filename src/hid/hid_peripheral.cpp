#include "hid/hid_peripheral.h"

#include <algorithm>
#include <atomic>
#include <utility>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "base/log.h"
#include "hid/gatt_database.h"

namespace tandrel {
namespace {

std::atomic<HIDPeripheral*> sharedInstance = nullptr;

// "2A4D (keyboard)" for an input report, "2A05 " for anything else.
std::string described(CharacteristicId characteristic) {
    const auto report = gatt::reportOf(characteristic);
    return fmt::format("{} {}", gatt::uuidOf(characteristic),
                       report ? fmt::format("({})", name(*report)) : "");
}

}  // namespace

HIDPeripheral::HIDPeripheral(std::string localName, MakeBluetoothPeripheral make, Clock& clock)
    : localName_(std::move(localName)),
      make_(std::move(make)),
      clock_(clock),
      queue_("pocketlink.bluetooth", clock) {
    clock_.attach(farewell_);
}

HIDPeripheral::~HIDPeripheral() { stop(); }

HIDPeripheral& HIDPeripheral::shared() { return *sharedInstance; }

void HIDPeripheral::setShared(HIDPeripheral* instance) { sharedInstance = instance; }

void HIDPeripheral::start() {
    queue_.post([this] {
        queue_.assertCurrent();
        if (!manager_) makeManager();
    });
}

void HIDPeripheral::restart() {
    queue_.post([this] {
        queue_.assertCurrent();
        if (stopped_) return;
        releaseHeld();
        endManager();
        state_ = "starting";
        makeManager();
        callHostsChanged();
    });
}

void HIDPeripheral::letGo() {
    queue_.sync([this] {
        queue_.assertCurrent();
        releaseHeld();
    });
    awaitFarewell();
}

void HIDPeripheral::stop() {
    queue_.sync([this] {
        queue_.assertCurrent();
        stopped_ = true;
        releaseHeld();
    });
    awaitFarewell();
    queue_.sync([this] {
        queue_.assertCurrent();
        endManager();
        state_ = "stopped";
    });
}

void HIDPeripheral::makeManager() {
    if (stopped_) return;
    manager_ = make_(*this, queue_);
    if (manager_) return;
    state_ = "bluetooth unavailable (unsupported)";
    log(state_);
}

void HIDPeripheral::endManager() {
    if (manager_) {
        manager_->stopAdvertising();
        manager_->removeAllServices();
    }
    manager_ = nullptr;
    forgetPhones();
    serviceChangedSent_.clear();
    servicesToAdd_.clear();
    published_ = false;
}

// Whatever knew of a link that is gone: a report that waited for it must not reach a later one.
void HIDPeripheral::forgetPhones() {
    subscriptions_.clear();
    outbox_.clear();
    drain();
}

void HIDPeripheral::awaitFarewell() {
    const TimePoint deadline = clock_.now() + kLongestFarewell;
    std::unique_lock lock(farewell_->mutex);
    while (!outboxEmpty_ && clock_.now() < deadline) {
        clock_.waitUntil(lock, *farewell_, deadline);
    }
}

std::vector<Uuid> HIDPeripheral::connectedHosts() {
    return queue_.sync([this] {
        queue_.assertCurrent();
        return subscriptions_.hosts();
    });
}

std::string HIDPeripheral::state() {
    return queue_.sync([this] {
        queue_.assertCurrent();
        return state_;
    });
}

std::string HIDPeripheral::advice() {
    return queue_.sync([this] {
        queue_.assertCurrent();
        return manager_ ? manager_->advice() : "";
    });
}

std::vector<BluetoothAdapter> HIDPeripheral::adapters() {
    return queue_.sync([this] {
        queue_.assertCurrent();
        return manager_ ? manager_->adapters() : std::vector<BluetoothAdapter>();
    });
}

std::optional<std::uint64_t> HIDPeripheral::pointerLink(const Uuid& host) {
    return queue_.sync([this, &host] {
        queue_.assertCurrent();
        return subscriptions_.pointerLink(host);
    });
}

void HIDPeripheral::setOnHostsChanged(std::function<void()> changed) {
    queue_.sync([&] {
        queue_.assertCurrent();
        onHostsChanged_ = std::move(changed);
    });
}

void HIDPeripheral::stateChanged(BluetoothState state) {
    queue_.assertCurrent();
    if (!manager_) return;
    log(fmt::format("bluetooth state {} auth {}", name(state), name(manager_->authorization())));
    // No link outlives any of these changes, and none of the systems reports each phone's going.
    const bool hadPhones = !subscriptions_.empty();
    forgetPhones();
    switch (state) {
        case BluetoothState::unauthorized:
            state_ = "bluetooth not allowed (System Settings > Privacy & Security > Bluetooth)";
            break;
        case BluetoothState::poweredOff:
            state_ = "bluetooth off";
            break;
        case BluetoothState::poweredOn:
            state_ = "powered on";
            publish();
            break;
        default:
            state_ = fmt::format("bluetooth unavailable ({})", name(state));
    }
    if (hadPhones) callHostsChanged();
}

void HIDPeripheral::publish() {
    manager_->removeAllServices();
    published_ = false;
    servicesToAdd_.clear();
    for (GattService& service : gatt::database(localName_)) {
        servicesToAdd_.push_back(std::move(service));
    }
    addNextService();
}

// One at a time: the next is added when the system has confirmed the one before.
void HIDPeripheral::addNextService() {
    if (servicesToAdd_.empty()) {
        published_ = true;
        advertise();
        return;
    }
    const GattService service = std::move(servicesToAdd_.front());
    servicesToAdd_.pop_front();
    manager_->addService(service);
}

void HIDPeripheral::serviceAdded(const std::string& serviceUuid,
                                 const std::optional<std::string>& error) {
    queue_.assertCurrent();
    if (!manager_) return;
    if (error) {
        state_ = fmt::format("failed to add {}: {}", serviceUuid, *error);
        log(state_);
        return;
    }
    log("added service " + serviceUuid);
    addNextService();
}

// Goes on while phones are connected, so that further ones can connect.
void HIDPeripheral::advertise() {
    if (!manager_ || !published_ || manager_->isAdvertising()) return;
    manager_->startAdvertising(localName_, {std::string(gatt::kAdvertisedService)});
}

void HIDPeripheral::advertisingStarted(const std::optional<AdvertisingError>& error) {
    queue_.assertCurrent();
    if (!manager_) return;
    if (error && !error->alreadyAdvertising) {
        state_ = "advertising failed: " + error->description;
    } else {
        state_ = "advertising as " + localName_;
    }
    log(state_);
}

void HIDPeripheral::hostsChanged() {
    const std::size_t hosts = subscriptions_.hosts().size();
    const std::string advertising = "advertising as " + localName_;
    state_ = hosts > 0 ? fmt::format("{} connected, {}", hosts, advertising) : advertising;
    advertise();
    callHostsChanged();
}

void HIDPeripheral::callHostsChanged() {
    if (onHostsChanged_) onHostsChanged_();
}

void HIDPeripheral::subscribed(const Uuid& host, CharacteristicId characteristic) {
    queue_.assertCurrent();
    if (!manager_) return;
    subscriptions_.add(host, characteristic);
    log(fmt::format("subscribe {} from {}", described(characteristic), host.text()));
    const auto report = gatt::reportOf(characteristic);
    if (!report) return;
    // Every phone starts with all keys and buttons up.
    deliver(releasedReport(*report), host);
    hostsChanged();
}

void HIDPeripheral::unsubscribed(const Uuid& host, CharacteristicId characteristic) {
    queue_.assertCurrent();
    if (!manager_) return;
    subscriptions_.remove(host, characteristic);
    outbox_.forget(host, characteristic);
    log(fmt::format("unsubscribe {} from {}", described(characteristic), host.text()));
    // The refused entry may have been this phone's.
    drain();
    hostsChanged();
}

GattReadReply HIDPeripheral::read(const GattRead& request) { return gatt::answer(request); }

AttError HIDPeripheral::write(const std::vector<GattWrite>& requests) {
    queue_.assertCurrent();
    for (const GattWrite& request : requests) {
        if (request.characteristic != gatt::kControlPoint) continue;
        log(fmt::format("control point write [{}] from {}", fmt::join(request.value, ", "),
                        request.central.text()));
        checkStaleCache(request.central);
    }
    return AttError::none;
}

// A phone with an old database in its cache writes the control point, at a handle it remembers, but
// never finds the reports to subscribe to. Told that all handles changed, it discovers them again.
void HIDPeripheral::checkStaleCache(const Uuid& host) {
    if (subscriptions_.isHost(host) || !subscriptions_.has(host, gatt::kServiceChanged)) return;
    if (!serviceChangedSent_.insert(host).second) return;
    log(fmt::format("stale cache on {}, indicating Service Changed", host.text()));
    const Bytes affectedHandles = {0x10, 0x00, 0xFF, 0xFF};  // 0x0010 to 0xFFFF
    outbox_.putFirst({host, gatt::kServiceChanged, affectedHandles});
    drain();
}

void HIDPeripheral::send(ReportID id, std::span<const std::uint8_t> bytes, const Uuid& host) {
    Report report{id, {}};
    std::copy_n(bytes.begin(), std::min(bytes.size(), reportLength(id)), report.storage.begin());
    queue_.post([this, report, host] {
        queue_.assertCurrent();
        if (!stopped_) deliver(report, host);
    });
}

void HIDPeripheral::deliver(const Report& report, const Uuid& host) {
    const CharacteristicId characteristic = gatt::inputOf(report.id);
    if (!subscriptions_.has(host, characteristic)) return;
    subscriptions_.note(host, report);
    outbox_.append({host, characteristic, Bytes(report.bytes().begin(), report.bytes().end())});
    drain();
}

void HIDPeripheral::releaseHeld() {
    for (const auto& [phone, report] : subscriptions_.releases()) deliver(report, phone);
}

void HIDPeripheral::readyToUpdateSubscribers() {
    queue_.assertCurrent();
    drain();
}

void HIDPeripheral::drain() {
    if (manager_) outbox_.drain(*manager_);
    {
        std::lock_guard lock(farewell_->mutex);
        outboxEmpty_ = outbox_.empty();
    }
    farewell_->condition.notify_all();
}

}  // namespace tandrel
