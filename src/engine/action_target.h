#pragma once

#include <memory>
#include <optional>
#include <string>

#include "devices/devices.h"
#include "http/message.h"

namespace tandrel {

// The one phone that an action is for: read, judged, asked about and acted on is the same phone,
// and an action whose target has changed meanwhile is not performed.
struct ActionTarget {
    std::optional<Device> device;  // none: a Bluetooth host without a screen
    Uuid host;
    std::shared_ptr<Input> input;
    std::optional<Size> screenSize;  // pixels; none before the first frame

    // How replies name the phone.
    std::string id() const { return device ? device->id() : host.text(); }
};

// The phone's name in the request: the body's "device" when it is text, else the query's.
std::string wantedDevice(const HTTPRequest& request);

// Chooses the phone of an action, matching it to its host first if it must. May block then.
Result<ActionTarget> resolveTarget(Devices& devices, HIDPeripheral& hid,
                                   const HTTPRequest& request);

// Whether the phone is still what it was: the same screen of the same size, driven by the same
// connected host.
bool isUnchanged(const ActionTarget& target, Devices& devices, HIDPeripheral& hid);

}  // namespace tandrel
