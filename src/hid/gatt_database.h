#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "hid/report_map.h"
#include "platform/bluetooth_peripheral.h"

namespace tandrel {

// The characteristics of the published database, by the ids under which the platform reports
// requests for them.
namespace gatt {

enum : CharacteristicId {
    kServiceChanged = 1,
    kHidInformation,
    kReportMap,
    kControlPoint,
    kProtocolMode,
    kKeyboardInput,
    kAbsolutePointerInput,
    kRelativeMouseInput,
    kConsumerInput,
    kKeyboardOutput,
    kManufacturerName,
    kPnpId,
    kBatteryLevel,
};

// What is advertised: the short form of the HID service.
inline constexpr std::string_view kAdvertisedService = "1812";

// The four services in the order in which they are added (HID over GATT Profile 1.0, 3).
std::vector<GattService> database(std::string_view localName);

// The characteristic that carries the input report.
CharacteristicId inputOf(ReportID report);
// The input report that the characteristic carries, if it is one of those four.
std::optional<ReportID> reportOf(CharacteristicId characteristic);
// Its UUID; empty for an id that the database does not have.
std::string_view uuidOf(CharacteristicId characteristic);

// Answers a read of a characteristic that has no static value. Input reports read as released, the
// protocol mode as report protocol, the battery as full.
GattReadReply answer(const GattRead& request);

}  // namespace gatt
}  // namespace tandrel
