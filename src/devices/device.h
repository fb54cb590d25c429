#pragma once

#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "base/json.h"
#include "base/uuid.h"
#include "screen/screen.h"

namespace tandrel {

// One phone as the API shows it: a screen and, when known and connected, the Bluetooth host that
// drives it.
struct Device {
    std::shared_ptr<Screen> screen;
    std::optional<Uuid> host;

    const std::string& id() const { return screen->id(); }
    const std::string& name() const { return screen->name(); }
    // {"id", "name", "bluetooth", and once there is a frame "width", "height", "frameAge"}
    Json json() const;
};

Json toJson(const std::vector<Device>& devices);

// The phone that a request names: the only one when `wanted` is empty, else the first whose id,
// then name, then beginning of the id equals it without regard to case. The error lists the phones.
Result<Device> findDevice(const std::vector<Device>& devices, const std::string& wanted);

}  // namespace tandrel
