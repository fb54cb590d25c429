#include <algorithm>
#include <cstdio>

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "platform/linux/bus_service.h"
#include "platform/linux/fake_bluez.h"

// The phones' side of FakeBluez.
namespace tandrel {
namespace {

using namespace bluez;

std::string adapterPath(const std::string& adapter) { return "/org/bluez/" + adapter; }

std::string hexOf(const Bytes& bytes) { return fmt::format("{:02x}", fmt::join(bytes, " ")); }

// ".../service01/characteristic02" is "1/2".
std::string placeOf(const std::string& path) {
    int service = 0, characteristic = 0;
    const auto at = path.find("/service");
    std::sscanf(path.c_str() + at, "/service%d/characteristic%d", &service, &characteristic);
    return fmt::format("{}/{}", service, characteristic);
}

}  // namespace

std::string FakeBluez::addDevice(const std::string& address, const std::string& adapter,
                                 const std::vector<std::string>& uuids) {
    std::string path = adapterPath(adapter) + "/dev_" + address;
    std::ranges::replace(path, ':', '_');
    on([&] {
        devices_[path] = {.adapter = adapterPath(adapter), .address = address, .uuids = uuids};
        if (!root_) return;
        exportDevice(path);
        devices_.at(path).object->emitInterfacesAddedSignal();
    });
    return path;
}

void FakeBluez::exportDevice(const std::string& path) {
    Device& device = devices_.at(path);
    device.object = sdbus::createObject(*bus_, path);
    sdbus::IObject& object = *device.object;
    addConstant(object, kDevice, "Adapter", sdbus::ObjectPath(device.adapter));
    addConstant(object, kDevice, "Alias", std::string("Phone"));
    addConstant(object, kDevice, "Address", device.address);
    addConstant(object, kDevice, "UUIDs", device.uuids);
    const auto property = [&](const char* name, bool Device::* member) {
        object.registerProperty(name).onInterface(kDevice).withGetter(
            [&device, member] { return device.*member; });
    };
    property("Connected", &Device::connected);
    property("ServicesResolved", &Device::connected);
    property("Paired", &Device::paired);
    addMethod(object, kDevice, "Disconnect", [this, path] { setConnected(path, false); });
    object.finishRegistration();
}

void FakeBluez::setConnected(const std::string& path, bool connected) {
    Device& device = devices_.at(path);
    device.connected = connected;
    device.object->emitPropertiesChangedSignal(kDevice, {"Connected", "ServicesResolved"});
}

bool FakeBluez::connect(const std::string& device) {
    return on([&] {
        const bool onAir = adapters_.at(devices_.at(device).adapter).onAir;
        if (onAir) setConnected(device, true);
        return onAir;
    });
}

void FakeBluez::use(const std::string& device) {
    awaitOnAir(device.substr(11, 4));
    connect(device);
    pair(device);
    read(device, "1/1");
    subscribe(device);
}

bool FakeBluez::pair(const std::string& path) {
    return on([&] {
        Device& device = devices_.at(path);
        try {
            sdbus::createProxy(*bus_, agentOwner_, agentPath_)
                ->callMethod("RequestAuthorization")
                .onInterface(kAgent)
                .withArguments(sdbus::ObjectPath(path));
        } catch (const sdbus::Error&) {
            return false;
        }
        device.paired = true;
        device.object->emitPropertiesChangedSignal(kDevice, {"Paired"});
        return true;
    });
}

void FakeBluez::subscribe(const std::string& path) {
    on([&] {
        Device& device = devices_.at(path);
        Adapter& adapter = adapters_.at(device.adapter);
        for (const std::string& line : adapter.listing) {
            if (line.find("notify") == std::string::npos) continue;
            const std::string characteristic = adapter.root + line.substr(0, line.find(' '));
            if (!device.subscribed.insert(characteristic).second) continue;
            if (++adapter.subscribers[characteristic] > 1) continue;
            sdbus::createProxy(*bus_, adapter.owner, characteristic)
                ->callMethod("StartNotify")
                .onInterface(kGattCharacteristic);
        }
    });
}

void FakeBluez::listen(sdbus::Message& message) {
    const std::string path = message.getPath();
    std::string interface;
    Properties properties;
    message >> interface >> properties;
    if (interface != kGattCharacteristic) return;
    const auto value = property<Bytes>(properties, "Value").value_or(Bytes{});
    for (auto& [name, device] : devices_) {
        const auto adapter = adapters_.find(device.adapter);
        if (!device.connected || !device.subscribed.contains(path) || adapter == adapters_.end() ||
            adapter->second.owner != message.getSender()) {
            continue;
        }
        device.received.push_back(placeOf(path) + " " + hexOf(value));
    }
}

std::string FakeBluez::call(const std::string& device, const std::string& place, const char* method,
                            const std::optional<Bytes>& value, unsigned offset) {
    return on([&] {
        const Adapter& adapter = adapters_.at(devices_.at(device).adapter);
        const bool isDescriptor = place.size() > 3;
        const auto proxy = sdbus::createProxy(
            *bus_, adapter.owner,
            fmt::format("{}/service0{}/characteristic0{}{}", adapter.root, place[0], place[2],
                        isDescriptor ? "/descriptor00" : ""));
        auto request =
            proxy->createMethodCall(isDescriptor ? kGattDescriptor : kGattCharacteristic, method);
        if (value) request << *value;
        request << Properties{{"device", sdbus::Variant(sdbus::ObjectPath(device))},
                              {"offset", sdbus::Variant(static_cast<std::uint16_t>(offset))},
                              {"link", sdbus::Variant(std::string("LE"))}};
        try {
            Bytes answer;
            auto reply = proxy->callMethod(request, 0);
            if (!value) reply >> answer;
            return hexOf(answer);
        } catch (const sdbus::Error& error) {
            return "<" + error.getName() + ">";
        }
    });
}

std::vector<std::string> FakeBluez::received(const std::string& device, std::size_t count) {
    std::vector<std::string> received;
    eventually([&] {
        return (received = on([&] { return devices_.at(device).received; })).size() >= count;
    });
    return received;
}

std::string FakeBluez::published(const std::string& adapter) {
    awaitOnAir(adapter);
    return on([&] {
        const Adapter& at = adapters_.at(adapterPath(adapter));
        return fmt::format("{}{}", fmt::join(at.listing, "\n"), at.advertisement);
    });
}

bool FakeBluez::awaitOnAir(const std::string& adapter) {
    return eventually([&] {
        return on([&] {
            const auto found = adapters_.find(adapterPath(adapter));
            return found != adapters_.end() && found->second.onAir;
        });
    });
}

}  // namespace tandrel
