#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "platform/bluetooth_peripheral.h"

// What the tests publish at the simulated daemon.
namespace tandrel::test {

enum : CharacteristicId { kServiceChanged = 1, kMap, kKeyboard, kPointer, kLed, kBattery };

inline GattCharacteristic characteristic(CharacteristicId id, const char* uuid,
                                         GattProperties properties, GattPermissions permissions,
                                         std::optional<Bytes> value = std::nullopt) {
    return {id, uuid, properties, permissions, std::move(value), {}};
}

// Generic Attribute, a keyboard's and a battery's services. Places: information 1/0, map 1/1,
// keyboard 1/2, pointer 1/3, output 1/4, battery 2/0.
inline std::vector<GattService> services() {
    constexpr GattPermissions readable = {.readable = true};
    constexpr GattPermissions encrypted = {.readNeedsEncryption = true,
                                           .writeNeedsEncryption = true};
    constexpr GattProperties readNotify = {.read = true, .notify = true};
    auto keyboard = characteristic(kKeyboard, "2A4D", readNotify, encrypted);
    keyboard.descriptors = {{"2908", {1, 1}}};
    auto pointer = characteristic(kPointer, "2A4D", readNotify, encrypted);
    pointer.descriptors = {{"2908", {2, 1}}};
    return {
        {"00001801-0000-1000-8000-00805F9B34FB",
         {characteristic(kServiceChanged, "2A05", {.indicate = true}, readable)}},
        {"00001812-0000-1000-8000-00805F9B34FB",
         {characteristic(20, "2A4A", {.read = true}, readable, Bytes{1, 2}),
          characteristic(kMap, "2A4B", {.read = true}, encrypted, Bytes{5, 1, 9}), keyboard,
          pointer,
          characteristic(kLed, "2A4D", {.read = true, .write = true, .writeWithoutResponse = true},
                         encrypted)}},
        {"0000180F-0000-1000-8000-00805F9B34FB",
         {characteristic(kBattery, "2A19", readNotify, readable)}}};
}

}  // namespace tandrel::test
