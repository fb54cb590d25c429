#include "platform/virtual/virtual_bluetooth_peripheral.h"

#include <algorithm>
#include <optional>
#include <set>
#include <utility>

#include "base/log.h"
#include "platform/virtual/hid_host.h"

namespace tandrel {
namespace {

// As long as a full transmit queue takes to have room again.
constexpr Duration kTransmitPause = std::chrono::milliseconds(15);
constexpr std::size_t kMostServices = 64;

class VirtualBluetoothPeripheral final : public BluetoothPeripheral {
 public:
    VirtualBluetoothPeripheral(const std::vector<VirtualPhone*>& phones,
                               BluetoothPeripheralDelegate& delegate, SerialQueue& queue);

    BluetoothAuthorization authorization() const override {
        return BluetoothAuthorization::allowedAlways;
    }
    void addService(const GattService& service) override;
    void removeAllServices() override;
    void startAdvertising(const std::string& localName,
                          const std::vector<std::string>& serviceUuids) override;
    void stopAdvertising() override { advertising_ = false; }
    bool isAdvertising() const override { return advertising_; }
    Delivery updateValue(CharacteristicId characteristic, const Bytes& value,
                         const std::vector<Uuid>& centrals) override;

 private:
    struct Central {
        VirtualPhone* phone = nullptr;
        bool inRange = false;
        bool stale = false;           // goes by services it remembers from another time
        std::optional<HidHost> host;  // while connected
        std::set<CharacteristicId> subscribed;
        PhoneSubscriptionPtr links;
    };

    void later(std::function<void()> task, Duration delay = {});
    void linkChanged(std::size_t index, bool inRange);
    void connect(Central& central);
    void connectStale(Central& central);
    void subscribe(Central& central, CharacteristicId characteristic);
    void disconnect(Central& central);

    BluetoothPeripheralDelegate& delegate_;
    SerialQueue& queue_;
    bool advertising_ = false;
    std::vector<GattService> services_;
    std::vector<Central> centrals_;
    // Tasks on the queue hold it weakly, so that none runs once this object has gone.
    const std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
};

VirtualBluetoothPeripheral::VirtualBluetoothPeripheral(const std::vector<VirtualPhone*>& phones,
                                                       BluetoothPeripheralDelegate& delegate,
                                                       SerialQueue& queue)
    : delegate_(delegate), queue_(queue) {
    later([this] { delegate_.stateChanged(BluetoothState::poweredOn); });
    for (VirtualPhone* phone : phones) {
        Central& central = centrals_.emplace_back();
        central.phone = phone;
        central.stale = phone->traits().staleCache;
    }
    for (std::size_t i = 0; i < centrals_.size(); ++i) {
        // Called on the phone's thread, where only the weak hold may be copied.
        const auto changed = [this, i, alive = std::weak_ptr(alive_)](PhoneLinks links) {
            queue_.post([this, i, alive, links] {
                if (!alive.expired()) linkChanged(i, links.bluetooth);
            });
        };
        centrals_[i].links = centrals_[i].phone->watchLinks(changed);
    }
}

void VirtualBluetoothPeripheral::later(std::function<void()> task, Duration delay) {
    queue_.postAfter(delay, [task = std::move(task), alive = std::weak_ptr(alive_)] {
        if (!alive.expired()) task();
    });
}

void VirtualBluetoothPeripheral::addService(const GattService& service) {
    const bool room = services_.size() < kMostServices;
    if (room) services_.push_back(service);
    later([this, uuid = service.uuid, room] {
        delegate_.serviceAdded(uuid, room ? std::nullopt : std::optional("too many services"));
    });
}

void VirtualBluetoothPeripheral::removeAllServices() {
    services_.clear();
    for (Central& central : centrals_) {
        central.host.reset();
        central.subscribed.clear();
    }
}

void VirtualBluetoothPeripheral::startAdvertising(const std::string&,
                                                  const std::vector<std::string>&) {
    if (advertising_) {
        return later([this] {
            delegate_.advertisingStarted(AdvertisingError{true, "advertising has started already"});
        });
    }
    advertising_ = true;
    later([this] { delegate_.advertisingStarted(std::nullopt); });
    for (std::size_t i = 0; i < centrals_.size(); ++i) {
        later([this, i] { connect(centrals_[i]); });
    }
}

void VirtualBluetoothPeripheral::linkChanged(std::size_t index, bool inRange) {
    Central& central = centrals_[index];
    if (central.inRange == inRange) return;
    central.inRange = inRange;
    if (inRange) {
        connect(central);
    } else {
        disconnect(central);
    }
}

void VirtualBluetoothPeripheral::connect(Central& central) {
    if (!advertising_ || !central.inRange || central.host) return;
    const Uuid id = central.phone->traits().host;
    auto host = HidHost::discover(services_, [&](CharacteristicId characteristic) {
        return delegate_.read({.central = id, .characteristic = characteristic, .offset = 0});
    });
    if (!host) return log(central.phone->traits().name + ": " + host.error().message);
    central.host = std::move(*host);
    if (central.stale) return connectStale(central);
    const auto subscriptions = central.host->subscriptions();
    for (const CharacteristicId characteristic : subscriptions) subscribe(central, characteristic);
}

// A phone that remembers older services finds no reports where it looks for them; all it does is to
// tell the control point that it is awake, and to wait for Service Changed.
void VirtualBluetoothPeripheral::connectStale(Central& central) {
    const auto serviceChanged = central.host->serviceChanged();
    const auto controlPoint = central.host->controlPoint();
    if (serviceChanged) subscribe(central, *serviceChanged);
    constexpr std::uint8_t kExitSuspend = 1;
    if (controlPoint) {
        delegate_.write({{.central = central.phone->traits().host,
                          .characteristic = *controlPoint,
                          .value = {kExitSuspend}}});
    }
}

void VirtualBluetoothPeripheral::subscribe(Central& central, CharacteristicId characteristic) {
    central.subscribed.insert(characteristic);
    delegate_.subscribed(central.phone->traits().host, characteristic);
}

void VirtualBluetoothPeripheral::disconnect(Central& central) {
    if (!central.host) return;
    central.host.reset();
    for (const CharacteristicId characteristic : std::exchange(central.subscribed, {})) {
        delegate_.unsubscribed(central.phone->traits().host, characteristic);
    }
}

Delivery VirtualBluetoothPeripheral::updateValue(CharacteristicId characteristic,
                                                 const Bytes& value,
                                                 const std::vector<Uuid>& centrals) {
    std::vector<Central*> receivers;
    for (Central& central : centrals_) {
        const bool addressed =
            std::ranges::find(centrals, central.phone->traits().host) != centrals.end();
        if (addressed && central.host && central.subscribed.contains(characteristic)) {
            receivers.push_back(&central);
        }
    }
    const bool refused = std::ranges::any_of(
        receivers, [](const Central* central) { return central->phone->takeRefusal(); });
    if (refused) {
        later([this] { delegate_.readyToUpdateSubscribers(); }, kTransmitPause);
        return Delivery::refused;
    }
    for (Central* central : receivers) {
        if (central->stale && central->host->serviceChanged() == characteristic) {
            central->stale = false;
            central->host.reset();
            later([this, central] { connect(*central); });
            continue;
        }
        auto events = central->host->receive(characteristic, value);
        if (!events.empty()) central->phone->receive(std::move(events));
    }
    return Delivery::accepted;
}

}  // namespace

MakeBluetoothPeripheral makeVirtualBluetoothPeripheral(std::vector<VirtualPhone*> phones) {
    return [phones = std::move(phones)](BluetoothPeripheralDelegate& delegate, SerialQueue& queue) {
        return std::make_unique<VirtualBluetoothPeripheral>(phones, delegate, queue);
    };
}

}  // namespace tandrel
