#pragma once

#include <functional>
#include <map>
#include <memory>
#include <set>
#include <string>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>

#include "platform/bluetooth_peripheral.h"
#include "platform/linux/bluez_names.h"

namespace tandrel::bluez {

using ValueResult = sdbus::Result<Bytes>;
using DoneResult = sdbus::Result<>;

// What bluetoothd asks of a published service. `device`: the object path of who is behind it.
class GattRequests {
 public:
    virtual ~GattRequests() = default;
    // A value of the application's own; static ones are answered before it comes to this.
    virtual void read(const std::string& device, CharacteristicId characteristic,
                      std::size_t offset, ValueResult result) = 0;
    virtual void write(const std::string& device, CharacteristicId characteristic, Bytes value,
                       DoneResult result) = 0;
    // Any request of a device tells that it uses our services, a static value's too.
    virtual void usedBy(const std::string& device) = 0;
    // The first subscriber came, the last went; bluetoothd does not say who.
    virtual void notifyingChanged() = 0;
};

// Services, characteristics and descriptors as objects on the bus below one path, which
// GattManager1.RegisterApplication takes. An application belongs to one adapter: a notification
// goes to all adapters at which its object is registered. Belongs to the connection's thread.
class GattObjects {
 public:
    // Services that bluetoothd provides itself are left out: it refuses the whole application.
    GattObjects(sdbus::IConnection& bus, std::string root, const std::vector<GattService>& services,
                GattRequests& requests);
    ~GattObjects();

    const std::string& root() const { return root_; }
    // What somebody at this adapter has subscribed to.
    const std::set<CharacteristicId>& notifying() const { return notifying_; }

    // Sends a notification; all of them leave in order. False for one that isn't there.
    bool notify(CharacteristicId characteristic, const Bytes& value);
    // Sends zeros to whatever was last told otherwise.
    void notifyReleased();

    static bool isOfTheDaemon(const std::string& serviceUuid);

 private:
    using ObjectPtr = std::unique_ptr<sdbus::IObject>;

    void addService(const std::string& path, const GattService& service);
    void addCharacteristic(const std::string& path, const std::string& service,
                           const GattCharacteristic& characteristic);
    void addDescriptor(const std::string& path, const std::string& characteristic,
                       const GattDescriptor& descriptor, bool encrypted);
    void addNotifying(sdbus::IObject& object, CharacteristicId id);

    sdbus::IConnection& bus_;
    const std::string root_;
    GattRequests& requests_;
    std::set<CharacteristicId> notifying_;
    std::map<CharacteristicId, sdbus::IObject*> characteristics_;
    std::map<CharacteristicId, Bytes> lastSent_;
    std::vector<ObjectPtr> objects_;
};

// The flags of GattCharacteristic1 for what a characteristic allows.
std::vector<std::string> flagsOf(const GattCharacteristic& characteristic);

}  // namespace tandrel::bluez
