#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>

// The names of bluetoothd's D-Bus interface.
namespace tandrel::bluez {

inline constexpr const char* kService = "org.bluez";
inline constexpr const char* kManagerPath = "/org/bluez";

inline constexpr const char* kAdapter = "org.bluez.Adapter1";
inline constexpr const char* kDevice = "org.bluez.Device1";
inline constexpr const char* kGattManager = "org.bluez.GattManager1";
inline constexpr const char* kAdvertisingManager = "org.bluez.LEAdvertisingManager1";
inline constexpr const char* kAgentManager = "org.bluez.AgentManager1";
inline constexpr const char* kGattService = "org.bluez.GattService1";
inline constexpr const char* kGattCharacteristic = "org.bluez.GattCharacteristic1";
inline constexpr const char* kGattDescriptor = "org.bluez.GattDescriptor1";
inline constexpr const char* kAdvertisement = "org.bluez.LEAdvertisement1";
inline constexpr const char* kAgent = "org.bluez.Agent1";

inline constexpr const char* kProperties = "org.freedesktop.DBus.Properties";
inline constexpr const char* kObjectManager = "org.freedesktop.DBus.ObjectManager";
inline constexpr const char* kPeer = "org.freedesktop.DBus.Peer";

using Properties = std::map<std::string, sdbus::Variant>;
using Interfaces = std::map<std::string, Properties>;

// None when it is missing or of another type than it should be.
template <typename T>
std::optional<T> property(const Properties& properties, const std::string& name) {
    const auto found = properties.find(name);
    if (found == properties.end() || !found->second.containsValueOfType<T>()) return std::nullopt;
    return found->second.get<T>();
}

// "hci0" of "/org/bluez/hci0".
inline std::string shortName(const std::string& path) { return path.substr(path.rfind('/') + 1); }

// Gives an object a property that never changes.
template <typename T>
void addConstant(sdbus::IObject& object, const char* interface, const std::string& name, T value) {
    object.registerProperty(name).onInterface(interface).withGetter([value] { return value; });
}

}  // namespace tandrel::bluez
