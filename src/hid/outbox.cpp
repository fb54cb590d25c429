#include "hid/outbox.h"

namespace tandrel {

void Outbox::forget(const Uuid& central, CharacteristicId characteristic) {
    std::erase_if(entries_, [&](const Entry& entry) {
        return entry.central == central && entry.characteristic == characteristic;
    });
}

void Outbox::drain(BluetoothPeripheral& manager) {
    while (!entries_.empty()) {
        const Entry& first = entries_.front();
        const Delivery delivery =
            manager.updateValue(first.characteristic, first.value, {first.central});
        if (delivery == Delivery::refused) return;
        entries_.pop_front();
    }
}

}  // namespace tandrel
