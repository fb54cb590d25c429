#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <set>
#include <vector>

#include "base/uuid.h"
#include "hid/held.h"
#include "platform/bluetooth_peripheral.h"

namespace tandrel {

// Which phone listens to what, and what each was last told is pressed. Belongs to one queue. Holds
// an entry for each phone that is subscribed to something, so the radio bounds it.
class Subscriptions {
 public:
    void add(const Uuid& phone, CharacteristicId characteristic);
    void remove(const Uuid& phone, CharacteristicId characteristic);
    void clear() { phones_.clear(); }
    bool empty() const { return phones_.empty(); }
    bool has(const Uuid& phone, CharacteristicId characteristic) const;

    // The phones that are subscribed to at least one input report.
    std::vector<Uuid> hosts() const;
    bool isHost(const Uuid& phone) const;

    // A number that changes whenever the phone begins or ends to listen to a pointer report; none
    // while it does not listen to the absolute pointer.
    std::optional<std::uint64_t> pointerLink(const Uuid& phone) const;

    // A report that goes to the phone, which must be subscribed.
    void note(const Uuid& phone, const Report& report) { phones_.at(phone).held.note(report); }

    struct Release {
        Uuid phone;
        Report report;
    };
    // What lets go of everything pressed on any phone.
    std::vector<Release> releases() const;

 private:
    struct Phone {
        std::set<CharacteristicId> subscribed;
        std::uint64_t pointerLink = 0;
        Held held;

        bool hasInput() const;
    };

    std::map<Uuid, Phone> phones_;
    std::uint64_t lastPointerLink_ = 0;
};

}  // namespace tandrel
