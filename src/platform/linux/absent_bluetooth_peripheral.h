#pragma once

#include <memory>

#include "platform/bluetooth_peripheral.h"

namespace tandrel {

// Stands where there is no Bluetooth backend: it reports the state `unsupported`, logs that once
// per process and refuses everything else, so that the rest of the program serves without it.
class AbsentBluetoothPeripheral final : public BluetoothPeripheral {
 public:
    // Called on the queue; both outlive the object.
    AbsentBluetoothPeripheral(BluetoothPeripheralDelegate& delegate, SerialQueue& queue);
    static MakeBluetoothPeripheral maker();

    // Nothing is withheld by the owner, so the program goes on to learn that there is nothing.
    BluetoothAuthorization authorization() const override;
    void addService(const GattService& service) override;
    void removeAllServices() override {}
    void startAdvertising(const std::string& localName,
                          const std::vector<std::string>& serviceUuids) override;
    void stopAdvertising() override {}
    bool isAdvertising() const override { return false; }
    Delivery updateValue(CharacteristicId characteristic, const Bytes& value,
                         const std::vector<Uuid>& centrals) override;

 private:
    void report(std::function<void(BluetoothPeripheralDelegate&)> call);

    BluetoothPeripheralDelegate& delegate_;
    SerialQueue& queue_;
    const std::shared_ptr<bool> alive_ = std::make_shared<bool>(true);
};

}  // namespace tandrel
