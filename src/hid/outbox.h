#pragma once

#include <deque>

#include "base/bytes.h"
#include "base/uuid.h"
#include "platform/bluetooth_peripheral.h"

namespace tandrel {

// What waits to be sent to phones, in order. Belongs to one queue.
//
// It has no bound, so that a stalled radio delays reports and loses none. What fills it is paced by
// hand-like input at one report every few hundredths of a second, and a phone that goes takes its
// entries along (`forget`), so none is left to hold up the others.
class Outbox {
 public:
    struct Entry {
        Uuid central;
        CharacteristicId characteristic = 0;
        Bytes value;
    };

    void append(Entry entry) { entries_.push_back(std::move(entry)); }
    void putFirst(Entry entry) { entries_.push_front(std::move(entry)); }
    bool empty() const { return entries_.empty(); }
    void clear() { entries_.clear(); }

    // Drops what waits for this characteristic of this phone.
    void forget(const Uuid& central, CharacteristicId characteristic);

    // Hands entries over from the first on until none is left or one is refused; that one stays
    // first.
    void drain(BluetoothPeripheral& manager);

 private:
    std::deque<Entry> entries_;
};

}  // namespace tandrel
