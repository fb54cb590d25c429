#include "platform/linux/bluez_gatt_objects.h"

#include <algorithm>
#include <ranges>

#include <fmt/format.h>

namespace tandrel::bluez {
namespace {

// The longest value of an attribute (Bluetooth Core, Vol 3, Part F, 3.2.9).
constexpr std::size_t kLongestValue = 512;

std::string deviceOf(const Properties& options) {
    const auto device = property<sdbus::ObjectPath>(options, "device");
    return device ? std::string(*device) : "";
}

std::size_t offsetOf(const Properties& options) {
    return property<std::uint16_t>(options, "offset").value_or(0);
}

void answerFrom(const Bytes& value, const Properties& options, const ValueResult& result) {
    const std::size_t offset = offsetOf(options);
    if (offset > value.size()) {
        result.returnError(sdbus::Error("org.bluez.Error.InvalidOffset", "the value is shorter"));
    } else {
        result.returnResults(
            Bytes(value.begin() + static_cast<std::ptrdiff_t>(offset), value.end()));
    }
}

sdbus::ObjectPath pathBelow(const std::string& parent, const char* kind, std::size_t number) {
    return sdbus::ObjectPath(fmt::format("{}/{}{:02}", parent, kind, number));
}

}  // namespace

std::vector<std::string> flagsOf(const GattCharacteristic& characteristic) {
    const auto& [read, write, writeWithoutResponse, notify, indicate] = characteristic.properties;
    const GattPermissions& permissions = characteristic.permissions;
    std::vector<std::string> flags;
    if (read) flags.emplace_back(permissions.readNeedsEncryption ? "encrypt-read" : "read");
    if (write) flags.emplace_back(permissions.writeNeedsEncryption ? "encrypt-write" : "write");
    // There is no encrypted kind of it; beside "encrypt-write" it is protected all the same.
    if (writeWithoutResponse) flags.emplace_back("write-without-response");
    if (notify) flags.emplace_back("notify");
    if (indicate) flags.emplace_back("indicate");
    // Who may not read a report may not subscribe to it either.
    if (notify && permissions.readNeedsEncryption) flags.emplace_back("encrypt-notify");
    return flags;
}

bool GattObjects::isOfTheDaemon(const std::string& serviceUuid) {
    return serviceUuid.starts_with("00001800-") || serviceUuid.starts_with("00001801-");
}

// Objects are made from the last to the first: the bus library lists the newest first, and handles
// are given out in the order of the list.
GattObjects::GattObjects(sdbus::IConnection& bus, std::string root,
                         const std::vector<GattService>& services, GattRequests& requests)
    : bus_(bus), root_(std::move(root)), requests_(requests) {
    objects_.push_back(sdbus::createObject(bus_, root_));
    objects_.back()->addObjectManager();
    for (std::size_t i = services.size(); i-- > 0;) {
        if (!isOfTheDaemon(services[i].uuid))
            addService(pathBelow(root_, "service", i), services[i]);
    }
}

GattObjects::~GattObjects() = default;

void GattObjects::addService(const std::string& path, const GattService& service) {
    for (std::size_t i = service.characteristics.size(); i-- > 0;) {
        addCharacteristic(pathBelow(path, "characteristic", i), path, service.characteristics[i]);
    }
    auto made = sdbus::createObject(bus_, path);
    addConstant(*made, kGattService, "UUID", service.uuid);
    addConstant(*made, kGattService, "Primary", true);
    made->finishRegistration();
    objects_.push_back(std::move(made));
}

void GattObjects::addCharacteristic(const std::string& path, const std::string& service,
                                    const GattCharacteristic& characteristic) {
    for (std::size_t i = characteristic.descriptors.size(); i-- > 0;) {
        addDescriptor(pathBelow(path, "descriptor", i), path, characteristic.descriptors[i],
                      characteristic.permissions.readNeedsEncryption);
    }
    auto made = sdbus::createObject(bus_, path);
    addConstant(*made, kGattCharacteristic, "UUID", characteristic.uuid);
    addConstant(*made, kGattCharacteristic, "Service", sdbus::ObjectPath(service));
    addConstant(*made, kGattCharacteristic, "Flags", flagsOf(characteristic));
    const CharacteristicId id = characteristic.id;
    made->registerMethod("ReadValue")
        .onInterface(kGattCharacteristic)
        .implementedAs([this, id, fixed = characteristic.value](ValueResult&& result,
                                                                const Properties& options) {
            requests_.usedBy(deviceOf(options));
            if (fixed) return answerFrom(*fixed, options, result);
            requests_.read(deviceOf(options), id, offsetOf(options), std::move(result));
        });
    made->registerMethod("WriteValue")
        .onInterface(kGattCharacteristic)
        .implementedAs(
            [this, id](DoneResult&& result, const Bytes& value, const Properties& options) {
                requests_.usedBy(deviceOf(options));
                if (offsetOf(options) != 0 || value.size() > kLongestValue) {
                    return result.returnError(
                        sdbus::Error("org.bluez.Error.InvalidOffset", "one piece only"));
                }
                requests_.write(deviceOf(options), id, value, std::move(result));
            });
    if (characteristic.properties.notify || characteristic.properties.indicate) {
        addNotifying(*made, id);
    }
    made->finishRegistration();
    characteristics_[id] = made.get();
    objects_.push_back(std::move(made));
}

// Without AcquireNotify, on purpose: its sockets, one for each characteristic, do not keep the
// order between a pointer's move and its button. Signals of one connection do.
void GattObjects::addNotifying(sdbus::IObject& object, CharacteristicId id) {
    object.registerMethod("StartNotify").onInterface(kGattCharacteristic).implementedAs([this, id] {
        if (notifying_.insert(id).second) requests_.notifyingChanged();
    });
    object.registerMethod("StopNotify").onInterface(kGattCharacteristic).implementedAs([this, id] {
        if (notifying_.erase(id) > 0) requests_.notifyingChanged();
    });
    object.registerMethod("Confirm").onInterface(kGattCharacteristic).implementedAs([] {});
}

void GattObjects::addDescriptor(const std::string& path, const std::string& characteristic,
                                const GattDescriptor& descriptor, bool encrypted) {
    const std::vector<std::string> flags = {encrypted ? "encrypt-read" : "read"};
    auto made = sdbus::createObject(bus_, path);
    addConstant(*made, kGattDescriptor, "UUID", descriptor.uuid);
    addConstant(*made, kGattDescriptor, "Characteristic", sdbus::ObjectPath(characteristic));
    addConstant(*made, kGattDescriptor, "Flags", flags);
    made->registerMethod("ReadValue")
        .onInterface(kGattDescriptor)
        .implementedAs(
            [this, value = descriptor.value](ValueResult&& result, const Properties& options) {
                requests_.usedBy(deviceOf(options));
                answerFrom(value, options, result);
            });
    made->finishRegistration();
    objects_.push_back(std::move(made));
}

bool GattObjects::notify(CharacteristicId characteristic, const Bytes& value) {
    const auto found = characteristics_.find(characteristic);
    if (found == characteristics_.end()) return false;
    lastSent_[characteristic] = value;
    auto signal = found->second->createSignal(kProperties, "PropertiesChanged");
    signal << std::string(kGattCharacteristic) << Properties{{"Value", sdbus::Variant(value)}}
           << std::vector<std::string>{};
    found->second->emitSignal(signal);
    return true;
}

void GattObjects::notifyReleased() {
    const auto isReleased = [](std::uint8_t byte) { return byte == 0; };
    for (const auto& [characteristic, value] : std::map(lastSent_)) {
        if (!std::ranges::all_of(value, isReleased)) {
            notify(characteristic, Bytes(value.size(), 0));
        }
    }
}

}  // namespace tandrel::bluez
