#include "devices/device.h"

#include <cmath>

#include <fmt/format.h>

#include "base/unicode.h"

namespace tandrel {
namespace {

std::string phoneList(const std::vector<Device>& devices) {
    std::string list = "Phones: ";
    for (const Device& device : devices) {
        if (&device != &devices.front()) list += ", ";
        list += fmt::format("{} ({})", device.name(), device.id());
    }
    return devices.empty() ? list + "none" : list;
}

}  // namespace

Json Device::json() const {
    Json json = {{"id", id()}, {"name", name()}, {"bluetooth", host.has_value()}};
    if (const auto latest = screen->latest()) {
        json["width"] = latest->frame.width();
        json["height"] = latest->frame.height();
        json["frameAge"] = std::round(latest->ageSeconds * 10) / 10;
    }
    return json;
}

Json toJson(const std::vector<Device>& devices) {
    Json list = Json::array();
    for (const Device& device : devices) list.push_back(device.json());
    return list;
}

Result<Device> findDevice(const std::vector<Device>& devices, const std::string& wanted) {
    if (wanted.empty()) {
        if (devices.size() == 1) return devices.front();
        if (devices.empty()) {
            return fail("no iPhone screen: plug the iPhone in over USB and unlock it");
        }
        return fail(fmt::format("{} phones are connected, pass device. {}", devices.size(),
                                phoneList(devices)));
    }
    const std::string key = lowerCased(wanted);
    using Test = bool (*)(const Device&, const std::string&);
    constexpr Test tests[] = {
        [](const Device& d, const std::string& k) { return lowerCased(d.id()) == k; },
        [](const Device& d, const std::string& k) { return lowerCased(d.name()) == k; },
        [](const Device& d, const std::string& k) { return lowerCased(d.id()).starts_with(k); },
    };
    for (const Test test : tests) {
        for (const Device& device : devices) {
            if (test(device, key)) return device;
        }
    }
    return fail(fmt::format("no phone matches \"{}\". {}", wanted, phoneList(devices)));
}

}  // namespace tandrel
