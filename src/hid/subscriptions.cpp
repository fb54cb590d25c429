#include "hid/subscriptions.h"

#include <algorithm>

#include "hid/gatt_database.h"

namespace tandrel {
namespace {

bool carriesPointer(CharacteristicId characteristic) {
    return characteristic == gatt::kAbsolutePointerInput ||
           characteristic == gatt::kRelativeMouseInput;
}

}  // namespace

bool Subscriptions::Phone::hasInput() const {
    return std::ranges::any_of(subscribed, [](CharacteristicId characteristic) {
        return gatt::reportOf(characteristic).has_value();
    });
}

void Subscriptions::add(const Uuid& phone, CharacteristicId characteristic) {
    Phone& entry = phones_[phone];
    entry.subscribed.insert(characteristic);
    if (carriesPointer(characteristic)) entry.pointerLink = ++lastPointerLink_;
}

void Subscriptions::remove(const Uuid& phone, CharacteristicId characteristic) {
    const auto found = phones_.find(phone);
    if (found == phones_.end()) return;
    Phone& entry = found->second;
    entry.subscribed.erase(characteristic);
    if (carriesPointer(characteristic)) entry.pointerLink = ++lastPointerLink_;
    if (entry.subscribed.empty()) phones_.erase(found);
}

bool Subscriptions::has(const Uuid& phone, CharacteristicId characteristic) const {
    const auto found = phones_.find(phone);
    return found != phones_.end() && found->second.subscribed.contains(characteristic);
}

std::vector<Uuid> Subscriptions::hosts() const {
    std::vector<Uuid> hosts;
    for (const auto& [phone, entry] : phones_) {
        if (entry.hasInput()) hosts.push_back(phone);
    }
    return hosts;
}

bool Subscriptions::isHost(const Uuid& phone) const {
    const auto found = phones_.find(phone);
    return found != phones_.end() && found->second.hasInput();
}

std::optional<std::uint64_t> Subscriptions::pointerLink(const Uuid& phone) const {
    if (!has(phone, gatt::kAbsolutePointerInput)) return std::nullopt;
    return phones_.at(phone).pointerLink;
}

std::vector<Subscriptions::Release> Subscriptions::releases() const {
    std::vector<Release> releases;
    for (const auto& [phone, entry] : phones_) {
        for (const Report& report : entry.held.release()) releases.push_back({phone, report});
    }
    return releases;
}

}  // namespace tandrel
