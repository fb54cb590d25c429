#include "hid/fake_bluetooth.h"

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <stdexcept>

#include <fmt/format.h>

namespace tandrel {

// Touched on the program's queue only, apart from the counts.
struct FakeBluetooth::World {
    std::mutex mutex;
    std::condition_variable counted;
    int accepted = 0;  // under the mutex
    int refused = 0;   // under the mutex

    void count(int World::* what) {
        std::lock_guard lock(mutex);
        ++(this->*what);
        counted.notify_all();
    }

    void await(int World::* what, int count) {
        std::unique_lock lock(mutex);
        counted.wait(lock, [&] { return this->*what >= count; });
    }

    SerialQueue* queue = nullptr;
    BluetoothPeripheralDelegate* delegate = nullptr;
    std::vector<GattService> services;
    std::string advertising;
    std::vector<std::string> transcript;
    int refusals = 0;
    int made = 0;

    CharacteristicId find(const std::string& key) const {
        return where([&](const GattCharacteristic& one) { return keyOf(one) == key; }).id;
    }

    std::string keyOf(CharacteristicId id) const {
        return keyOf(where([&](const GattCharacteristic& one) { return one.id == id; }));
    }

    template <typename Fits>
    const GattCharacteristic& where(Fits fits) const {
        for (const GattService& service : services) {
            const auto found = std::ranges::find_if(service.characteristics, fits);
            if (found != service.characteristics.end()) return *found;
        }
        throw std::runtime_error("nobody published it");
    }

    static std::string keyOf(const GattCharacteristic& characteristic) {
        if (characteristic.uuid != "2A4D") return characteristic.uuid;
        const Bytes& reference = characteristic.descriptors.at(0).value;
        return reference.at(1) == 2 ? "LEDs" : std::to_string(reference.at(0));
    }
};

class FakeBluetooth::Peripheral final : public BluetoothPeripheral {
 public:
    Peripheral(FakeBluetooth& fake, BluetoothPeripheralDelegate& delegate)
        : fake_(fake), world_(*fake.world_) {
        world_.delegate = &delegate;
    }

    ~Peripheral() override { world_.delegate = nullptr; }

    BluetoothAuthorization authorization() const override {
        return BluetoothAuthorization::allowedAlways;
    }

    void addService(const GattService& service) override {
        if (!fake_.addError) world_.services.push_back(service);
        later([uuid = service.uuid, error = fake_.addError](auto& to) {
            to.serviceAdded(uuid, error);
        });
    }

    void removeAllServices() override { world_.services.clear(); }

    void startAdvertising(const std::string& localName,
                          const std::vector<std::string>& serviceUuids) override {
        if (!fake_.advertisingError) {
            world_.advertising = fmt::format("{}: {}", localName, fmt::join(serviceUuids, " "));
        }
        later([error = fake_.advertisingError](auto& to) { to.advertisingStarted(error); });
    }

    void stopAdvertising() override { world_.advertising.clear(); }
    bool isAdvertising() const override { return !world_.advertising.empty(); }

    Delivery updateValue(CharacteristicId characteristic, const Bytes& value,
                         const std::vector<Uuid>& centrals) override {
        if (world_.refusals > 0) {
            --world_.refusals;
            world_.count(&World::refused);
            return Delivery::refused;
        }
        std::string phones;
        for (const Uuid& central : centrals) phones += central.text().front();
        world_.transcript.push_back(fmt::format("{}{} {}: {:02x}", fake_.stamp(), phones,
                                                world_.keyOf(characteristic),
                                                fmt::join(value, " ")));
        world_.count(&World::accepted);
        return Delivery::accepted;
    }

 private:
    // Calls the program in a task of its own, unless this peripheral has gone by then.
    void later(std::function<void(BluetoothPeripheralDelegate&)> call) {
        world_.queue->post([world = fake_.world_, made = world_.made, call = std::move(call)] {
            if (world->delegate && world->made == made) call(*world->delegate);
        });
    }

    FakeBluetooth& fake_;
    World& world_;
};

FakeBluetooth::FakeBluetooth() : world_(std::make_shared<World>()) {}

MakeBluetoothPeripheral FakeBluetooth::maker() {
    return [this](BluetoothPeripheralDelegate& delegate,
                  SerialQueue& queue) -> std::unique_ptr<BluetoothPeripheral> {
        world_->queue = &queue;
        if (absent) return nullptr;
        ++world_->made;
        return std::make_unique<Peripheral>(*this, delegate);
    };
}

void FakeBluetooth::act(const std::function<void(World&)>& verb) {
    world_->queue->sync([&] { verb(*world_); });
    // Adding four services one after another takes as many tasks, each posted by the one before.
    constexpr int kLongestChain = 8;
    for (int i = 0; i < kLongestChain; ++i) world_->queue->sync([] {});
}

void FakeBluetooth::changeState(BluetoothState state) {
    act([&](World& world) {
        if (state != BluetoothState::poweredOn) world.advertising.clear();
        world.delegate->stateChanged(state);
    });
}

void FakeBluetooth::subscribe(const std::string& name, const std::string& characteristic) {
    act([&](World& world) { world.delegate->subscribed(phone(name), world.find(characteristic)); });
}

void FakeBluetooth::unsubscribe(const std::string& name, const std::string& characteristic) {
    act([&](World& world) {
        world.delegate->unsubscribed(phone(name), world.find(characteristic));
    });
}

GattReadReply FakeBluetooth::read(const std::string& characteristic, std::size_t offset) {
    GattReadReply reply;
    act([&](World& world) {
        reply = world.delegate->read({phone("A"), world.find(characteristic), offset});
    });
    return reply;
}

AttError FakeBluetooth::write(const std::string& name, const std::string& characteristic,
                              Bytes value) {
    AttError error = AttError::none;
    act([&](World& world) {
        error = world.delegate->write({{phone(name), world.find(characteristic), value}});
    });
    return error;
}

void FakeBluetooth::refuseNextUpdates(int count) {
    act([&](World& world) { world.refusals = count; });
}

void FakeBluetooth::becomeReady() {
    act([](World& world) {
        world.refusals = 0;
        world.delegate->readyToUpdateSubscribers();
    });
}

void FakeBluetooth::awaitAccepted(int count) { world_->await(&World::accepted, count); }

void FakeBluetooth::awaitRefused(int count) { world_->await(&World::refused, count); }

template <typename T>
T FakeBluetooth::now(T World::* member) {
    T value{};
    act([&](World& world) { value = world.*member; });
    return value;
}

std::vector<std::string> FakeBluetooth::transcript() { return now(&World::transcript); }

void FakeBluetooth::clearTranscript() {
    act([](World& world) { world.transcript.clear(); });
}

std::vector<GattService> FakeBluetooth::services() { return now(&World::services); }

std::string FakeBluetooth::advertising() { return now(&World::advertising); }

int FakeBluetooth::peripheralsMade() { return now(&World::made); }

bool FakeBluetooth::hasPeripheral() { return now(&World::delegate) != nullptr; }

Uuid FakeBluetooth::phone(const std::string& name) {
    std::array<std::uint8_t, 16> bytes{};
    bytes.fill(static_cast<std::uint8_t>((name.at(0) - 'A' + 0xA) * 0x11));
    return Uuid(bytes);
}

}  // namespace tandrel
