#pragma once

#include <cstdint>
#include <functional>
#include <map>
#include <optional>
#include <set>
#include <span>
#include <vector>

#include "base/result.h"
#include "platform/bluetooth_peripheral.h"
#include "platform/virtual/hid_report_map.h"
#include "platform/virtual/input_event.h"

namespace tandrel {

// The phone's end of HID over GATT (HOGP 1.0): finds the input reports in a peripheral's services
// and turns what they bring into events. Trusts nothing that the peripheral says.
class HidHost {
 public:
    // Reads one characteristic's value from the peripheral.
    using Read = std::function<GattReadReply(CharacteristicId)>;

    // Fails when there is no HID service, when its report map cannot be read, or when no
    // characteristic brings an input report of the map.
    static Result<HidHost> discover(const std::vector<GattService>& services, const Read& read);

    // What a host subscribes to: the input reports and, where there are, battery level and Service
    // Changed; in the order of the services.
    const std::vector<CharacteristicId>& subscriptions() const { return subscriptions_; }
    // None where the peripheral has no such characteristic.
    std::optional<CharacteristicId> serviceChanged() const { return serviceChanged_; }
    std::optional<CharacteristicId> controlPoint() const { return controlPoint_; }

    // What one notification tells. A characteristic that brings no input report, and a report that
    // is shorter than the map says, tell nothing.
    std::vector<InputEvent> receive(CharacteristicId characteristic,
                                    std::span<const std::uint8_t> value);

 private:
    std::vector<InputEvent> events(std::uint8_t reportId, const std::vector<HidValue>& values);

    HidReportMap map_;
    std::map<CharacteristicId, std::uint8_t> inputReports_;
    std::vector<CharacteristicId> subscriptions_;
    std::optional<CharacteristicId> serviceChanged_;
    std::optional<CharacteristicId> controlPoint_;
    bool buttonDown_ = false;
    std::map<std::uint8_t, std::set<std::uint16_t>> held_;  // keys and controls by report id
};

}  // namespace tandrel
