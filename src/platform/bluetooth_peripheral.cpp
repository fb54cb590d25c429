#include "platform/bluetooth_peripheral.h"

namespace tandrel {

std::string_view name(BluetoothState state) {
    switch (state) {
        case BluetoothState::unknown:
            return "unknown";
        case BluetoothState::resetting:
            return "resetting";
        case BluetoothState::unsupported:
            return "unsupported";
        case BluetoothState::unauthorized:
            return "unauthorized";
        case BluetoothState::poweredOff:
            return "powered off";
        case BluetoothState::poweredOn:
            return "powered on";
    }
    return "unknown";
}

std::string_view name(BluetoothAuthorization authorization) {
    switch (authorization) {
        case BluetoothAuthorization::notDetermined:
            return "not determined";
        case BluetoothAuthorization::restricted:
            return "restricted";
        case BluetoothAuthorization::denied:
            return "denied";
        case BluetoothAuthorization::allowedAlways:
            return "allowed always";
    }
    return "not determined";
}

}  // namespace tandrel
