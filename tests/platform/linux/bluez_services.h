#pragma once

#include <optional>
#include <vector>

#include "platform/bluetooth_peripheral.h"

// What the tests publish at the simulated daemon.
namespace tandrel::test {

enum : CharacteristicId { kServiceChanged = 1, kMap, kKeyboard, kPointer, kLed, kBattery };

// Generic Attribute, a keyboard's and a battery's services. Places: information 1/0, map 1/1,
// keyboard 1/2, pointer 1/3, output 1/4, battery 2/0.
inline std::vector<GattService> services() {
    constexpr GattPermissions readable = {.readable = true};
    constexpr GattPermissions encrypted = {.readNeedsEncryption = true,
                                           .writeNeedsEncryption = true};
    constexpr GattProperties readNotify = {.read = true, .notify = true};
    constexpr GattProperties output = {.read = true, .write = true, .writeWithoutResponse = true};
    constexpr auto none = std::nullopt;
    return {{"00001801-0000-1000-8000-00805F9B34FB",
             {{kServiceChanged, "2A05", {.indicate = true}, readable, none, {}}}},
            {"00001812-0000-1000-8000-00805F9B34FB",
             {{20, "2A4A", {.read = true}, readable, Bytes{1, 2}, {}},
              {kMap, "2A4B", {.read = true}, encrypted, Bytes{5, 1, 9}, {}},
              {kKeyboard, "2A4D", readNotify, encrypted, none, {{"2908", {1, 1}}}},
              {kPointer, "2A4D", readNotify, encrypted, none, {{"2908", {2, 1}}}},
              {kLed, "2A4D", output, encrypted, none, {}}}},
            {"0000180F-0000-1000-8000-00805F9B34FB",
             {{kBattery, "2A19", readNotify, readable, none, {}}}}};
}

}  // namespace tandrel::test
