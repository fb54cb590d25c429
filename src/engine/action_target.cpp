#include "engine/action_target.h"

#include <algorithm>

#include <fmt/format.h>

namespace tandrel {
namespace {

Error severalHosts(std::size_t count) {
    return {
        fmt::format("{} Bluetooth hosts are connected and no screen is on USB, pass host "
                    "(one of /status hosts)",
                    count)};
}

bool isMirrored(const Device& device) { return !tellsWhose(device.screen->link()); }

Result<Uuid> chooseHost(HIDPeripheral& hid, const HTTPRequest& request) {
    const std::vector<Uuid> hosts = hid.connectedHosts();
    if (const auto wanted = textMember(request.body, "host")) {
        const auto host = Uuid::parse(*wanted);
        if (host && std::ranges::count(hosts, *host) > 0) return *host;
        return fail("no connected Bluetooth host " + *wanted);
    }
    if (hosts.empty()) {
        return fail(
            fmt::format("no iPhone connected over Bluetooth and no screen on USB: pair \"{}\" "
                        "in its Bluetooth settings",
                        hid.localName()));
    }
    if (hosts.size() > 1) return std::unexpected(severalHosts(hosts.size()));
    return hosts.front();
}

// Whether the request names a host that none of the pictures is known to show.
bool namesUnseenHost(const std::vector<Device>& phones, const HTTPRequest& request) {
    const auto host = Uuid::parse(textMember(request.body, "host").value_or(""));
    return host && std::ranges::all_of(phones, [&](const Device& phone) {
               return isMirrored(phone) && phone.host != host;
           });
}

// The host of the phone, matched if it must be. As long as nobody knows whose a mirrored picture
// is, it says nothing about what an action on one of several phones would do.
Result<Uuid> hostOf(const Device& phone, Devices& devices, HIDPeripheral& hid) {
    auto host = devices.hostOf(phone);
    const std::size_t count = hid.connectedHosts().size();
    if (!host && isMirrored(phone) && count > 1) return std::unexpected(severalHosts(count));
    return host;
}

}  // namespace

std::string wantedDevice(const HTTPRequest& request) {
    if (auto device = textMember(request.body, "device")) return *device;
    const auto device = request.query.find("device");
    return device == request.query.end() ? std::string() : device->second;
}

Result<ActionTarget> resolveTarget(Devices& devices, HIDPeripheral& hid,
                                   const HTTPRequest& request) {
    ActionTarget target;
    const std::string wanted = wantedDevice(request);
    const std::vector<Device> phones = devices.all();
    if (wanted.empty() && (phones.empty() || namesUnseenHost(phones, request))) {
        target.host = TRY(chooseHost(hid, request));
    } else {
        Device device = TRY(findDevice(phones, wanted));
        target.host = TRY(hostOf(device, devices, hid));
        device.host = target.host;
        target.screenSize = device.screen->size();
        target.device = std::move(device);
    }
    target.input = devices.input(target.host);
    return target;
}

bool isUnchanged(const ActionTarget& target, Devices& devices, HIDPeripheral& hid) {
    if (!target.device) {
        const bool isUnseen = std::ranges::all_of(devices.all(), [&](const Device& phone) {
            return isMirrored(phone) && phone.host != target.host;
        });
        return isUnseen && std::ranges::count(hid.connectedHosts(), target.host) > 0;
    }
    for (const Device& now : devices.all()) {
        if (now.screen != target.device->screen) continue;
        return now.host == target.host &&
               (!target.screenSize || now.screen->size() == target.screenSize);
    }
    return false;
}

}  // namespace tandrel
