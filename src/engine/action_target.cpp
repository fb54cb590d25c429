#include "engine/action_target.h"

#include <algorithm>

#include <fmt/format.h>

namespace tandrel {
namespace {

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
    if (hosts.size() > 1) {
        return fail(
            fmt::format("{} Bluetooth hosts are connected and no screen is on USB, pass host "
                        "(one of /status hosts)",
                        hosts.size()));
    }
    return hosts.front();
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
    if (phones.empty() && wanted.empty()) {
        target.host = TRY(chooseHost(hid, request));
    } else {
        Device device = TRY(findDevice(phones, wanted));
        target.host = TRY(devices.hostOf(device));
        device.host = target.host;
        target.screenSize = device.screen->size();
        target.device = std::move(device);
    }
    target.input = devices.input(target.host);
    return target;
}

bool isUnchanged(const ActionTarget& target, Devices& devices, HIDPeripheral& hid) {
    if (!target.device) {
        return devices.all().empty() && std::ranges::count(hid.connectedHosts(), target.host) > 0;
    }
    for (const Device& now : devices.all()) {
        if (now.screen != target.device->screen) continue;
        return now.host == target.host &&
               (!target.screenSize || now.screen->size() == target.screenSize);
    }
    return false;
}

}  // namespace tandrel
