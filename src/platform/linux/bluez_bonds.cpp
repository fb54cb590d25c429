#include "platform/linux/bluez_bonds.h"

#include <fmt/format.h>

namespace tandrel::bluez {
namespace {

constexpr Duration kShortVisit = std::chrono::seconds(3);
// One may be a phone at the edge of reach.
constexpr int kTellAfter = 2;

}  // namespace

std::vector<Device> BondWatch::newlyStale(const Objects& objects, TimePoint now) {
    std::vector<Device> stale;
    for (const auto& [path, device] : objects.devices) {
        if (!device.paired || device.isAccessory) continue;
        Visit& visit = visits_[device.address];
        if (device.connected && !visit.connected) {
            visit.since = now;
            visit.settled = false;
        }
        if (device.connected && device.servicesResolved) {
            visit.settled = true;
            visit.failures = 0;
        }
        if (!device.connected && visit.connected && !visit.settled &&
            now - visit.since < kShortVisit && ++visit.failures == kTellAfter) {
            stale.push_back(device);
        }
        visit.connected = device.connected;
    }
    return stale;
}

std::string BondWatch::advice(const Device& device) {
    return fmt::format(
        "{} comes and goes at once: its pairing is no longer valid. On the phone, forget this "
        "computer in Settings > Bluetooth; here, run \"bluetoothctl remove {}\"; then pair again",
        device.name.empty() ? device.address : device.name, device.address);
}

}  // namespace tandrel::bluez
