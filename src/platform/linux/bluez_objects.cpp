#include "platform/linux/bluez_objects.h"

#include <algorithm>

namespace tandrel::bluez {
namespace {

// Drawn once; it only has to be ours and stay.
constexpr std::string_view kNameSpace = "6E0B5A52-3C1F-4C55-9A54-7D1B0E8F2C64";

}  // namespace

Uuid centralOf(const std::string& address) {
    return Uuid::ofName(*Uuid::parse(kNameSpace), address);
}

PhoneInUse phoneInUse(const Objects& objects, const std::string& adapter,
                      const std::set<std::string>& users, const std::string& current) {
    std::vector<std::string> connected;
    for (const auto& [path, device] : objects.devices) {
        if (device.adapter == adapter && device.connected && users.contains(device.address)) {
            connected.push_back(path);
        }
    }
    if (connected.empty()) return {};
    if (connected.size() == 1) {
        const bool ready = objects.devices.at(connected.front()).servicesResolved;
        return {ready ? connected.front() : "", {}};
    }
    const auto kept = std::ranges::find(connected, current);
    connected.erase(kept == connected.end() ? connected.begin() : kept);
    return {"", connected};
}

}  // namespace tandrel::bluez
