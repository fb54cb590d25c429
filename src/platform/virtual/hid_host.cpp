#include "platform/virtual/hid_host.h"

#include <algorithm>

namespace tandrel {
namespace {

constexpr std::string_view kHidService = "00001812-0000-1000-8000-00805F9B34FB";
constexpr std::string_view kReportMap = "2A4B";
constexpr std::string_view kControlPoint = "2A4C";
constexpr std::string_view kReport = "2A4D";
constexpr std::string_view kReportReference = "2908";
constexpr std::string_view kBatteryLevel = "2A19";
constexpr std::string_view kServiceChanged = "2A05";
constexpr std::uint8_t kInputReport = 1;  // in a report reference

constexpr std::uint16_t kGenericDesktop = 0x01;
constexpr std::uint16_t kKeyboard = 0x07;
constexpr std::uint16_t kButtons = 0x09;
constexpr std::uint16_t kConsumer = 0x0C;
constexpr std::uint16_t kX = 0x30;
constexpr std::uint16_t kY = 0x31;
constexpr std::uint16_t kFirstModifier = 0xE0;
constexpr std::uint16_t kLastModifier = 0xE7;

std::optional<Bytes> valueOf(const GattCharacteristic& characteristic, const HidHost::Read& read) {
    if (characteristic.value) return characteristic.value;
    GattReadReply reply = read(characteristic.id);
    if (reply.error != AttError::none) return std::nullopt;
    return std::move(reply.value);
}

// The report id of a characteristic that notifies of an input report.
std::optional<std::uint8_t> inputReportId(const GattCharacteristic& characteristic) {
    if (characteristic.uuid != kReport || !characteristic.properties.notify) return std::nullopt;
    for (const GattDescriptor& descriptor : characteristic.descriptors) {
        if (descriptor.uuid != kReportReference || descriptor.value.size() != 2) continue;
        if (descriptor.value[1] == kInputReport) return descriptor.value[0];
    }
    return std::nullopt;
}

// What a report says of each kind of control.
struct Reading {
    std::optional<HidValue> x;
    std::optional<HidValue> y;
    std::optional<bool> button;
    std::uint8_t modifiers = 0;
    std::set<std::uint16_t> keys;
    std::set<std::uint16_t> controls;

    void take(const HidValue& value) {
        const auto page = static_cast<std::uint16_t>(value.usage >> 16);
        const auto usage = static_cast<std::uint16_t>(value.usage);
        if (page == kGenericDesktop && usage == kX) x = value;
        if (page == kGenericDesktop && usage == kY) y = value;
        if (page == kButtons && usage == 1) button = value.value != 0;
        if (value.value == 0) return;
        if (page == kKeyboard && usage >= kFirstModifier && usage <= kLastModifier) {
            modifiers |= static_cast<std::uint8_t>(1U << (usage - kFirstModifier));
        } else if (page == kKeyboard) {
            keys.insert(usage);
        }
        if (page == kConsumer) controls.insert(usage);
    }
};

double fraction(const HidValue& value) {
    const double range = static_cast<double>(value.maximum) - value.minimum;
    return range > 0 ? (static_cast<double>(value.value) - value.minimum) / range : 0;
}

std::vector<std::uint16_t> added(const std::set<std::uint16_t>& before,
                                 const std::set<std::uint16_t>& now) {
    std::vector<std::uint16_t> fresh;
    std::ranges::set_difference(now, before, std::back_inserter(fresh));
    return fresh;
}

}  // namespace

Result<HidHost> HidHost::discover(const std::vector<GattService>& services, const Read& read) {
    HidHost host;
    std::optional<Bytes> descriptor;
    for (const GattService& service : services) {
        for (const GattCharacteristic& characteristic : service.characteristics) {
            const bool extra =
                characteristic.uuid == kBatteryLevel || characteristic.uuid == kServiceChanged;
            if (extra) host.subscriptions_.push_back(characteristic.id);
            if (characteristic.uuid == kServiceChanged) host.serviceChanged_ = characteristic.id;
            if (service.uuid != kHidService) continue;
            if (characteristic.uuid == kControlPoint) host.controlPoint_ = characteristic.id;
            if (characteristic.uuid == kReportMap) descriptor = valueOf(characteristic, read);
            if (const auto id = inputReportId(characteristic)) {
                host.inputReports_.emplace(characteristic.id, *id);
                host.subscriptions_.push_back(characteristic.id);
            }
        }
    }
    if (!descriptor) return fail("the peripheral has no report map that can be read");
    host.map_ = TRY(HidReportMap::parse(*descriptor));
    std::erase_if(host.inputReports_,
                  [&](const auto& report) { return host.map_.reportBytes(report.second) == 0; });
    if (host.inputReports_.empty()) return fail("the peripheral has no input reports");
    return host;
}

std::vector<InputEvent> HidHost::receive(CharacteristicId characteristic,
                                         std::span<const std::uint8_t> value) {
    const auto report = inputReports_.find(characteristic);
    if (report == inputReports_.end() || value.size() < map_.reportBytes(report->second)) return {};
    return events(report->second, map_.decode(report->second, value));
}

// Both pointer collections move the one pointer and press its one button, as they do on a phone:
// whichever report came last says how the button stands.
std::vector<InputEvent> HidHost::events(std::uint8_t reportId,
                                        const std::vector<HidValue>& values) {
    Reading reading;
    for (const HidValue& value : values) reading.take(value);
    std::vector<InputEvent> events;
    if (reading.x && reading.y && reading.x->relative) {
        const PointerBy motion{reading.x->value, reading.y->value};
        if (motion != PointerBy{}) events.emplace_back(motion);
    } else if (reading.x && reading.y) {
        events.emplace_back(PointerTo{{fraction(*reading.x), fraction(*reading.y)}});
    }
    if (reading.button && *reading.button != buttonDown_) {
        buttonDown_ = *reading.button;
        events.emplace_back(buttonDown_ ? ButtonEvent::down : ButtonEvent::up);
    }
    std::set<std::uint16_t> now = reading.keys;
    now.insert(reading.controls.begin(), reading.controls.end());
    for (const std::uint16_t usage : added(held_[reportId], now)) {
        if (reading.keys.contains(usage)) {
            events.emplace_back(KeyEvent{usage, reading.modifiers});
        } else {
            events.emplace_back(ConsumerEvent{usage});
        }
    }
    held_[reportId] = std::move(now);
    return events;
}

}  // namespace tandrel
