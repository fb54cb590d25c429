#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "base/serial_queue.h"
#include "base/uuid.h"

// The system's Bluetooth LE peripheral role: publish GATT services, advertise, answer reads and
// writes, notify subscribers. Radio, pairing, bonding and encryption are the system's.
namespace tandrel {

enum class BluetoothState { unknown, resetting, unsupported, unauthorized, poweredOff, poweredOn };
enum class BluetoothAuthorization { notDetermined, restricted, denied, allowedAlways };

// "unknown", "resetting", "unsupported", "unauthorized", "powered off", "powered on"
std::string_view name(BluetoothState state);
// "not determined", "restricted", "denied", "allowed always"
std::string_view name(BluetoothAuthorization authorization);

// Names one characteristic of the published database; chosen by the publisher, unique in it.
using CharacteristicId = int;

struct GattProperties {
    bool read = false;
    bool write = false;
    bool writeWithoutResponse = false;
    bool notify = false;
    bool indicate = false;

    bool operator==(const GattProperties&) const = default;
};

struct GattPermissions {
    bool readable = false;
    bool writeable = false;
    bool readNeedsEncryption = false;
    bool writeNeedsEncryption = false;

    bool operator==(const GattPermissions&) const = default;
};

struct GattDescriptor {
    std::string uuid;  // 16-bit UUID in hexadecimal, upper case ("2908")
    Bytes value;

    bool operator==(const GattDescriptor&) const = default;
};

struct GattCharacteristic {
    CharacteristicId id = 0;
    std::string uuid;  // 16-bit UUID in hexadecimal, upper case ("2A4D")
    GattProperties properties;
    GattPermissions permissions;
    std::optional<Bytes> value;  // static: the system answers reads; without one the delegate does
    std::vector<GattDescriptor> descriptors;

    bool operator==(const GattCharacteristic&) const = default;
};

struct GattService {
    std::string uuid;  // full 128-bit form, upper case
    std::vector<GattCharacteristic> characteristics;

    bool operator==(const GattService&) const = default;
};

// ATT error codes (Bluetooth Core, Vol 3, Part F, 3.4.1.1); 0 is success.
enum class AttError : std::uint8_t { none = 0, invalidOffset = 7, attributeNotFound = 10 };

struct GattRead {
    Uuid central;
    CharacteristicId characteristic = 0;
    std::size_t offset = 0;
};

struct GattReadReply {
    AttError error = AttError::none;
    Bytes value;  // from the offset on
};

struct GattWrite {
    Uuid central;
    CharacteristicId characteristic = 0;
    Bytes value;
};

struct AdvertisingError {
    bool alreadyAdvertising = false;
    std::string description;
};

// What the system reports. Every call comes on the queue that the peripheral was made with, in a
// task of its own: never from inside one of the peripheral's operations or its making.
class BluetoothPeripheralDelegate {
 public:
    virtual ~BluetoothPeripheralDelegate() = default;
    // Also called once after the peripheral is made, with the state it starts in.
    virtual void stateChanged(BluetoothState state) = 0;
    virtual void serviceAdded(const std::string& serviceUuid,
                              const std::optional<std::string>& error) = 0;
    virtual void advertisingStarted(const std::optional<AdvertisingError>& error) = 0;
    virtual void subscribed(const Uuid& central, CharacteristicId characteristic) = 0;
    virtual void unsubscribed(const Uuid& central, CharacteristicId characteristic) = 0;
    // The reply goes to the central as it is returned.
    virtual GattReadReply read(const GattRead& request) = 0;
    // One batch; the returned code answers its first request.
    virtual AttError write(const std::vector<GattWrite>& requests) = 0;
    // The transmit queue has room again after `updateValue` returned `Delivery::refused`.
    virtual void readyToUpdateSubscribers() = 0;
};

enum class Delivery { accepted, refused };

// How one of this computer's Bluetooth adapters stands.
struct BluetoothAdapter {
    std::string name;  // the system's, "hci0"
    bool canBePeripheral = false;
    bool powered = false;
    bool advertising = false;         // or would, if no phone were connected
    std::string phone;                // the one that is driven, by its name; empty while none is
    std::vector<std::string> paired;  // phones, by name
    int refusals = 0;                 // further phones that were sent away

    bool operator==(const BluetoothAdapter&) const = default;
};

// All operations are called on the queue that the peripheral was made with. Ending the object ends
// its calls to the delegate.
class BluetoothPeripheral {
 public:
    virtual ~BluetoothPeripheral() = default;
    virtual BluetoothAuthorization authorization() const = 0;
    virtual void addService(const GattService& service) = 0;  // answered by serviceAdded
    virtual void removeAllServices() = 0;
    virtual void startAdvertising(const std::string& localName,
                                  const std::vector<std::string>& serviceUuids) = 0;
    virtual void stopAdvertising() = 0;
    virtual bool isAdvertising() const = 0;
    // What stands in the way, or what the owner should do, in a sentence; empty when nothing.
    virtual std::string advice() const { return {}; }
    // Those that are used, in the order of their names; none where the system does not tell.
    virtual std::vector<BluetoothAdapter> adapters() const { return {}; }
    // Hands the value to the system for these subscribed centrals, as a notification or indication.
    // `refused`: the transmit queue is full; readyToUpdateSubscribers follows.
    virtual Delivery updateValue(CharacteristicId characteristic, const Bytes& value,
                                 const std::vector<Uuid>& centrals) = 0;
};

// Makes the peripheral; `delegate` and `queue` outlive it. Called on the queue.
using MakeBluetoothPeripheral = std::function<std::unique_ptr<BluetoothPeripheral>(
    BluetoothPeripheralDelegate& delegate, SerialQueue& queue)>;

}  // namespace tandrel
