#include "platform/linux/bluez_peripheral.h"

#include <algorithm>
#include <map>
#include <utility>

#include "base/log.h"
#include "platform/linux/bluez_session.h"

namespace tandrel {
namespace {

using bluez::PhoneLink;

constexpr std::size_t kMostServices = 64;

class BluezPeripheral final : public BluetoothPeripheral, private bluez::SessionEvents {
 public:
    BluezPeripheral(BluetoothPeripheralDelegate& delegate, SerialQueue& queue, BluezOptions options,
                    Clock& clock);
    ~BluezPeripheral() override { loop_.reset(); }
    BluezPeripheral(const BluezPeripheral&) = delete;
    BluezPeripheral& operator=(const BluezPeripheral&) = delete;

    BluetoothAuthorization authorization() const override {
        return state_ == BluetoothState::unauthorized ? BluetoothAuthorization::denied
                                                      : BluetoothAuthorization::allowedAlways;
    }
    void addService(const GattService& service) override;
    void removeAllServices() override;
    void startAdvertising(const std::string& localName,
                          const std::vector<std::string>& serviceUuids) override;
    void stopAdvertising() override;
    bool isAdvertising() const override { return advertising_; }
    std::string advice() const override { return advice_; }
    std::vector<BluetoothAdapter> adapters() const override { return adapters_; }
    Delivery updateValue(CharacteristicId characteristic, const Bytes& value,
                         const std::vector<Uuid>& centrals) override;

 private:
    struct Link {
        PhoneLink phone;
        ReportPacer pacer;
    };
    using Links = std::map<std::string, Link>;  // by adapter

    // On the thread of the bus.
    void stateIs(BluetoothState state, const std::string& sentence) override;
    void adaptersAre(const std::vector<BluetoothAdapter>& adapters) override;
    void advise(const std::string& sentence) override;
    void advertised(const std::optional<std::string>& error) override;
    void linkIs(const std::string& adapter, const std::optional<PhoneLink>& link) override;
    void taken(const std::string& adapter, int count) override;
    void read(std::uint64_t number, const GattRead& request) override;
    void write(std::uint64_t number, const GattWrite& request) override;

    // From either thread to the other; dropped when this object or the session has gone.
    void onQueue(std::function<void()> task, Duration delay = {});
    void onBus(std::function<void(bluez::Session&)> task);

    void setLink(const std::string& adapter, const std::optional<PhoneLink>& link);
    void signalRoom(Duration delay);

    BluetoothPeripheralDelegate& delegate_;
    SerialQueue& queue_;
    const BluezOptions options_;
    Clock& clock_;

    BluetoothState state_ = BluetoothState::unknown;  // the queue's, as all up to `links_`
    std::string advice_;
    std::vector<BluetoothAdapter> adapters_;
    bool advertising_ = false;
    std::vector<GattService> services_;
    bool refusing_ = false;
    Links links_;

    const std::shared_ptr<const bool> alive_ = std::make_shared<const bool>(true);
    std::unique_ptr<bluez::Session> session_;  // the bus's
    std::unique_ptr<BusLoop> loop_;
};

BluezPeripheral::BluezPeripheral(BluetoothPeripheralDelegate& delegate, SerialQueue& queue,
                                 BluezOptions options, Clock& clock)
    : delegate_(delegate), queue_(queue), options_(std::move(options)), clock_(clock) {
    const auto opened = [this](BusLoop& loop, sdbus::IConnection& bus) {
        session_ = std::make_unique<bluez::Session>(
            bus, loop, static_cast<bluez::SessionEvents&>(*this),
            bluez::Session::Options{options_.adapters, options_.retry, options_.deafness});
    };
    const auto lost = [this] {
        session_.reset();
        stateIs(BluetoothState::resetting, "the system's message bus is gone");
    };
    const auto failed = [this](const std::string& reason) {
        stateIs(BluetoothState::unsupported,
                "there is no system message bus, which Bluetooth needs: " + reason);
    };
    loop_ =
        std::make_unique<BusLoop>("bluez", BusLoop::Events{opened, lost, failed}, options_.retry);
}

void BluezPeripheral::onQueue(std::function<void()> task, Duration delay) {
    queue_.postAfter(delay, [task = std::move(task), alive = std::weak_ptr(alive_)] {
        if (!alive.expired()) task();
    });
}

void BluezPeripheral::onBus(std::function<void(bluez::Session&)> task) {
    loop_->post([this, task = std::move(task)] {
        if (session_) task(*session_);
    });
}

void BluezPeripheral::addService(const GattService& service) {
    const bool room = services_.size() < kMostServices;
    if (room) services_.push_back(service);
    onQueue([this, uuid = service.uuid, room] {
        delegate_.serviceAdded(uuid, room ? std::nullopt : std::optional("too many services"));
    });
}

// What is published goes on until something else is, so that handles stay as phones know them.
void BluezPeripheral::removeAllServices() {
    services_.clear();
    links_.clear();
}

void BluezPeripheral::startAdvertising(const std::string& localName,
                                       const std::vector<std::string>& serviceUuids) {
    if (std::exchange(advertising_, true)) {
        return onQueue([this] {
            delegate_.advertisingStarted(AdvertisingError{true, "advertising has started already"});
        });
    }
    onBus([publication = bluez::Publication{services_, localName, serviceUuids}](
              bluez::Session& session) { session.publish(publication); });
}

void BluezPeripheral::stopAdvertising() {
    if (!std::exchange(advertising_, false)) return;
    onBus([](bluez::Session& session) { session.stopAdvertising(); });
}

Delivery BluezPeripheral::updateValue(CharacteristicId characteristic, const Bytes& value,
                                      const std::vector<Uuid>& centrals) {
    std::vector<Links::pointer> receivers;
    for (auto& entry : links_) {
        const PhoneLink& phone = entry.second.phone;
        const bool addressed = std::ranges::find(centrals, phone.central) != centrals.end();
        if (addressed && phone.listens.contains(characteristic)) receivers.push_back(&entry);
    }
    const TimePoint now = clock_.now();
    for (const auto* receiver : receivers) {
        const ReportPacer& pacer = receiver->second.pacer;
        if (pacer.hasRoom(now)) continue;
        refusing_ = true;
        if (const auto at = pacer.roomAt()) signalRoom(*at - now);
        return Delivery::refused;
    }
    for (auto* receiver : receivers) {
        receiver->second.pacer.handOver(now);
        onBus([adapter = receiver->first, link = receiver->second.phone.number, characteristic,
               value](bluez::Session& session) {
            session.notify(adapter, link, characteristic, value);
        });
    }
    return Delivery::accepted;
}

void BluezPeripheral::signalRoom(Duration delay) {
    const auto signal = [this] {
        if (std::exchange(refusing_, false)) delegate_.readyToUpdateSubscribers();
    };
    onQueue(signal, delay);
}

void BluezPeripheral::stateIs(BluetoothState state, const std::string& sentence) {
    onQueue([this, state, sentence] {
        log("bluetooth: " + sentence);
        state_ = state;
        advice_ = state == BluetoothState::poweredOn ? "" : sentence;
        advertising_ = false;
        links_.clear();
        delegate_.stateChanged(state);
    });
}

void BluezPeripheral::adaptersAre(const std::vector<BluetoothAdapter>& adapters) {
    onQueue([this, adapters] { adapters_ = adapters; });
}

void BluezPeripheral::advise(const std::string& sentence) {
    onQueue([this, sentence] {
        log("bluetooth: " + sentence);
        advice_ = sentence;
    });
}

void BluezPeripheral::advertised(const std::optional<std::string>& error) {
    onQueue([this, error] {
        if (!advertising_) return;
        delegate_.advertisingStarted(error ? std::optional(AdvertisingError{.description = *error})
                                           : std::nullopt);
    });
}

void BluezPeripheral::linkIs(const std::string& adapter, const std::optional<PhoneLink>& link) {
    onQueue([this, adapter, link] {
        if (advertising_) setLink(adapter, link);
    });
}

void BluezPeripheral::setLink(const std::string& adapter, const std::optional<PhoneLink>& link) {
    const auto found = links_.find(adapter);
    std::optional<PhoneLink> before;
    if (found != links_.end()) before = found->second.phone;
    const bool same = before && link && before->number == link->number;
    if (same) {
        found->second.phone = *link;
    } else {
        links_.erase(adapter);
        if (link) links_.emplace(adapter, Link{*link, ReportPacer(options_.pace)});
    }
    const auto ended = [&](CharacteristicId id) { return !same || !link->listens.contains(id); };
    const auto begun = [&](CharacteristicId id) { return !same || !before->listens.contains(id); };
    if (before) {
        for (const CharacteristicId id : before->listens) {
            if (ended(id)) delegate_.unsubscribed(before->central, id);
        }
    }
    if (link) {
        for (const CharacteristicId id : link->listens) {
            if (begun(id)) delegate_.subscribed(link->central, id);
        }
    }
}

void BluezPeripheral::taken(const std::string& adapter, int count) {
    onQueue([this, adapter, count] {
        const auto link = links_.find(adapter);
        if (link == links_.end()) return;
        link->second.pacer.taken(count);
        const auto at = link->second.pacer.roomAt();
        if (refusing_ && at) signalRoom(std::max(*at - clock_.now(), Duration{}));
    });
}

void BluezPeripheral::read(std::uint64_t number, const GattRead& request) {
    onQueue([this, number, request] {
        onBus([number, reply = delegate_.read(request)](bluez::Session& session) {
            session.answerRead(number, reply);
        });
    });
}

void BluezPeripheral::write(std::uint64_t number, const GattWrite& request) {
    onQueue([this, number, request] {
        onBus([number, error = delegate_.write({request})](bluez::Session& session) {
            session.answerWrite(number, error);
        });
    });
}

}  // namespace

std::set<std::string> BluezOptions::parseAdapters(std::string_view text) {
    std::set<std::string> adapters;
    while (!text.empty()) {
        const auto comma = std::min(text.find(','), text.size());
        if (comma > 0) adapters.emplace(text.substr(0, comma));
        text.remove_prefix(std::min(comma + 1, text.size()));
    }
    return adapters;
}

MakeBluetoothPeripheral makeBluezPeripheral(const BluezOptions& options, Clock& clock) {
    return [options, &clock](BluetoothPeripheralDelegate& delegate, SerialQueue& queue) {
        return std::make_unique<BluezPeripheral>(delegate, queue, options, clock);
    };
}

}  // namespace tandrel
