#include "hid/gatt_database.h"

#include <array>
#include <span>

namespace tandrel::gatt {
namespace {

struct Row {
    std::string_view service;
    CharacteristicId id;
    std::string_view uuid;
    GattProperties properties;
    GattPermissions permissions;
    std::span<const std::uint8_t> value = {};          // none: reads are answered one by one
    std::array<std::uint8_t, 2> reportReference = {};  // report id, type; none when zero
};

constexpr std::string_view kGenericAttribute = "00001801-0000-1000-8000-00805F9B34FB";
constexpr std::string_view kHumanInterfaceDevice = "00001812-0000-1000-8000-00805F9B34FB";
constexpr std::string_view kDeviceInformation = "0000180A-0000-1000-8000-00805F9B34FB";
constexpr std::string_view kBattery = "0000180F-0000-1000-8000-00805F9B34FB";

constexpr std::string_view kReportReference = "2908";

// HID version 1.11, country 0, flags: normally connectable.
constexpr auto kHidInformationValue = std::to_array<std::uint8_t>({0x11, 0x01, 0x00, 0x02});
// Vendor id source 2 (USB), vendor 0xFFFF, product 0x0100, version 0x0100.
constexpr auto kPnpIdValue =
    std::to_array<std::uint8_t>({0x02, 0xFF, 0xFF, 0x00, 0x01, 0x00, 0x01});

constexpr GattProperties kRead = {.read = true};
constexpr GattProperties kReadNotify = {.read = true, .notify = true};
constexpr GattProperties kIndicate = {.indicate = true};
constexpr GattProperties kWriteCommand = {.writeWithoutResponse = true};
constexpr GattProperties kReadWriteCommand = {.read = true, .writeWithoutResponse = true};
constexpr GattProperties kReadWriteBoth = {
    .read = true, .write = true, .writeWithoutResponse = true};

constexpr GattPermissions kReadable = {.readable = true};
constexpr GattPermissions kReadableWriteable = {.readable = true, .writeable = true};
constexpr GattPermissions kEncryptedRead = {.readNeedsEncryption = true};
constexpr GattPermissions kEncryptedWrite = {.writeNeedsEncryption = true};
constexpr GattPermissions kEncryptedBoth = {.readNeedsEncryption = true,
                                            .writeNeedsEncryption = true};

// clang-format off
// service, characteristic, UUID, properties, permissions, static value, report reference
constexpr auto kRows = std::to_array<Row>({
    {kGenericAttribute,     kServiceChanged,       "2A05", kIndicate,         kReadable},
    {kHumanInterfaceDevice, kHidInformation,       "2A4A", kRead,             kReadable, kHidInformationValue},
    {kHumanInterfaceDevice, kReportMap,            "2A4B", kRead,             kEncryptedRead, HIDReportMap::descriptor},
    {kHumanInterfaceDevice, kControlPoint,         "2A4C", kWriteCommand,     kEncryptedWrite},
    {kHumanInterfaceDevice, kProtocolMode,         "2A4E", kReadWriteCommand, kReadableWriteable},
    {kHumanInterfaceDevice, kKeyboardInput,        "2A4D", kReadNotify,       kEncryptedRead, {}, {1, 1}},
    {kHumanInterfaceDevice, kAbsolutePointerInput, "2A4D", kReadNotify,       kEncryptedRead, {}, {2, 1}},
    {kHumanInterfaceDevice, kRelativeMouseInput,   "2A4D", kReadNotify,       kEncryptedRead, {}, {3, 1}},
    {kHumanInterfaceDevice, kConsumerInput,        "2A4D", kReadNotify,       kEncryptedRead, {}, {4, 1}},
    {kHumanInterfaceDevice, kKeyboardOutput,       "2A4D", kReadWriteBoth,    kEncryptedBoth, {}, {1, 2}},
    {kDeviceInformation,    kManufacturerName,     "2A29", kRead,             kReadable},  // value: localName
    {kDeviceInformation,    kPnpId,                "2A50", kRead,             kReadable, kPnpIdValue},
    {kBattery,              kBatteryLevel,         "2A19", kReadNotify,       kReadable},
});
// clang-format on

GattCharacteristic characteristic(const Row& row, std::string_view localName) {
    GattCharacteristic made{.id = row.id,
                            .uuid = std::string(row.uuid),
                            .properties = row.properties,
                            .permissions = row.permissions,
                            .value = std::nullopt,
                            .descriptors = {}};
    if (!row.value.empty()) made.value = Bytes(row.value.begin(), row.value.end());
    if (row.id == kManufacturerName) made.value = toBytes(localName);
    if (row.reportReference[0] != 0) {
        made.descriptors.push_back({std::string(kReportReference),
                                    Bytes(row.reportReference.begin(), row.reportReference.end())});
    }
    return made;
}

// None for a characteristic without a value of its own.
std::optional<Bytes> readValue(CharacteristicId id) {
    constexpr std::uint8_t kReportProtocol = 1;
    constexpr std::uint8_t kFullPercent = 100;
    if (const auto report = reportOf(id)) return Bytes(reportLength(*report), 0);
    switch (id) {
        case kProtocolMode:
            return Bytes{kReportProtocol};
        case kBatteryLevel:
            return Bytes{kFullPercent};
        case kKeyboardOutput:
            return Bytes{0};
        default:
            return std::nullopt;
    }
}

}  // namespace

std::vector<GattService> database(std::string_view localName) {
    std::vector<GattService> services;
    for (const Row& row : kRows) {
        if (services.empty() || services.back().uuid != row.service) {
            services.push_back({std::string(row.service), {}});
        }
        services.back().characteristics.push_back(characteristic(row, localName));
    }
    return services;
}

CharacteristicId inputOf(ReportID report) {
    return kKeyboardInput + static_cast<int>(report) - static_cast<int>(ReportID::keyboard);
}

std::optional<ReportID> reportOf(CharacteristicId id) {
    for (const ReportID report : kReportIDs) {
        if (inputOf(report) == id) return report;
    }
    return std::nullopt;
}

std::string_view uuidOf(CharacteristicId id) {
    for (const Row& row : kRows) {
        if (row.id == id) return row.uuid;
    }
    return {};
}

GattReadReply answer(const GattRead& request) {
    const auto value = readValue(request.characteristic);
    if (!value) return {AttError::attributeNotFound, {}};
    if (request.offset > value->size()) return {AttError::invalidOffset, {}};
    return {AttError::none,
            Bytes(value->begin() + static_cast<std::ptrdiff_t>(request.offset), value->end())};
}

}  // namespace tandrel::gatt
