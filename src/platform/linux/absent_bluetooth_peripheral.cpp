#include "platform/linux/absent_bluetooth_peripheral.h"

#include <atomic>
#include <utility>

#include "base/log.h"

namespace tandrel {
namespace {

constexpr const char* kReason = "this build has no Bluetooth backend yet";

}  // namespace

AbsentBluetoothPeripheral::AbsentBluetoothPeripheral(BluetoothPeripheralDelegate& delegate,
                                                     SerialQueue& queue)
    : delegate_(delegate), queue_(queue) {
    static std::atomic<bool> said = false;
    if (!said.exchange(true)) {
        log(std::string("bluetooth: ") + kReason + "; the phone can be seen but not operated");
    }
    report([](auto& to) { to.stateChanged(BluetoothState::unsupported); });
}

MakeBluetoothPeripheral AbsentBluetoothPeripheral::maker() {
    return [](BluetoothPeripheralDelegate& delegate, SerialQueue& queue) {
        return std::make_unique<AbsentBluetoothPeripheral>(delegate, queue);
    };
}

BluetoothAuthorization AbsentBluetoothPeripheral::authorization() const {
    return BluetoothAuthorization::allowedAlways;
}

void AbsentBluetoothPeripheral::addService(const GattService& service) {
    report([uuid = service.uuid](auto& to) { to.serviceAdded(uuid, kReason); });
}

void AbsentBluetoothPeripheral::startAdvertising(const std::string&,
                                                 const std::vector<std::string>&) {
    report([](auto& to) { to.advertisingStarted(AdvertisingError{.description = kReason}); });
}

// Nobody is ever subscribed, so there is nobody to miss the value.
Delivery AbsentBluetoothPeripheral::updateValue(CharacteristicId, const Bytes&,
                                                const std::vector<Uuid>&) {
    return Delivery::accepted;
}

// Later on the queue, as a system would, and only while the object lives.
void AbsentBluetoothPeripheral::report(std::function<void(BluetoothPeripheralDelegate&)> call) {
    queue_.post([this, alive = std::weak_ptr(alive_), call = std::move(call)] {
        if (!alive.expired()) call(delegate_);
    });
}

}  // namespace tandrel
