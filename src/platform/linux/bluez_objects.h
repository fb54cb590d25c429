#pragma once

#include <map>
#include <set>
#include <string>
#include <vector>

#include "base/uuid.h"

namespace tandrel::bluez {

// A Bluetooth controller of this computer.
struct Adapter {
    std::string address;
    bool powered = false;
    bool canBePeripheral = false;  // can publish services and advertise
};

// A device that an adapter knows or is connected to; only some of them are phones of ours.
struct Device {
    std::string adapter;  // its object path
    std::string address;  // the identity address as soon as it is known
    std::string name;
    bool connected = false;
    bool servicesResolved = false;
    bool paired = false;
    // A keyboard, mouse, headset or the like, which this computer uses and not the other way round.
    bool isAccessory = false;
};

// What bluetoothd has, by object path.
struct Objects {
    std::map<std::string, Adapter> adapters;
    std::map<std::string, Device> devices;
};

// The identifier of a phone: the same on every start, made from its address.
Uuid centralOf(const std::string& address);

// Which connected device of an adapter is the phone that uses our services.
struct PhoneInUse {
    std::string phone;                // its path; empty while there is none to send to
    std::vector<std::string> others;  // further ones, which are to be disconnected

    bool operator==(const PhoneInUse&) const = default;
};

// `users`: addresses of the devices that have used our services; `current`: the path of the phone
// so far. bluetoothd sends a notification to everyone who ever subscribed, so while two of them are
// connected nothing can be sent to one alone: there is no phone until the second has left.
PhoneInUse phoneInUse(const Objects& objects, const std::string& adapter,
                      const std::set<std::string>& users, const std::string& current);

}  // namespace tandrel::bluez
