#include <algorithm>
#include <cstdio>

#include <fmt/format.h>
#include <fmt/ranges.h>

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
    run([&] {
        Device device;
        device.adapter = adapterPath(adapter);
        device.address = address;
        device.uuids = uuids;
        {
            std::lock_guard lock(mutex_);
            devices_[path] = std::move(device);
        }
        if (!root_) return;
        makeDevice(path);
        devices_.at(path).object->emitInterfacesAddedSignal();
    });
    return path;
}

void FakeBluez::makeDevice(const std::string& path) {
    Device& device = devices_.at(path);
    device.object = sdbus::createObject(*bus_, path);
    sdbus::IObject& object = *device.object;
    addConstant(object, kDevice, "Adapter", sdbus::ObjectPath(device.adapter));
    addConstant(object, kDevice, "Alias", std::string("Phone"));
    addConstant(object, kDevice, "UUIDs", device.uuids);
    const auto property = [&](const char* name, auto member) {
        object.registerProperty(name).onInterface(kDevice).withGetter(
            [this, path, member] { return devices_.at(path).*member; });
    };
    property("Address", &Device::address);
    property("Connected", &Device::connected);
    property("ServicesResolved", &Device::resolved);
    property("Paired", &Device::paired);
    object.registerMethod("Disconnect").onInterface(kDevice).implementedAs([this, path] {
        setConnected(path, false, false);
    });
    object.finishRegistration();
}

void FakeBluez::emitDevice(const std::string& device, const std::vector<std::string>& properties) {
    devices_.at(device).object->emitPropertiesChangedSignal(kDevice, properties);
}

void FakeBluez::setConnected(const std::string& path, bool connected, bool resolved) {
    {
        std::lock_guard lock(mutex_);
        Device& device = devices_.at(path);
        device.connected = connected;
        device.resolved = resolved;
        changed_.notify_all();
    }
    emitDevice(path, {"Connected", "ServicesResolved"});
}

void FakeBluez::connectElsewhere(const std::string& device) {
    run([&] { setConnected(device, true, true); });
}

bool FakeBluez::connect(const std::string& device) {
    bool onAir = false;
    run([&] {
        onAir = adapters_.at(devices_.at(device).adapter).onAir;
        if (onAir) setConnected(device, true, true);
    });
    return onAir;
}

void FakeBluez::disconnect(const std::string& device) {
    run([&] { setConnected(device, false, false); });
}

void FakeBluez::use(const std::string& device) {
    awaitOnAir(device.substr(11, 4));
    connect(device);
    pair(device);
    read(device, "1/1");
    subscribe(device);
}

bool FakeBluez::pair(const std::string& device) {
    bool allowed = true;
    run([&] {
        if (agentOwner_.empty()) return;
        try {
            sdbus::createProxy(*bus_, agentOwner_, agentPath_)
                ->callMethod("RequestAuthorization")
                .onInterface(kAgent)
                .withArguments(sdbus::ObjectPath(device));
            devices_.at(device).paired = true;
            emitDevice(device, {"Paired"});
        } catch (const sdbus::Error&) {
            allowed = false;
        }
    });
    return allowed;
}

void FakeBluez::subscribe(const std::string& path) {
    run([&] {
        Device& device = devices_.at(path);
        Adapter& adapter = adapters_.at(device.adapter);
        for (const std::string& line : adapter.listing) {
            if (line.find("notify") == std::string::npos) continue;
            const std::string characteristic = adapter.root + line.substr(0, line.find(' '));
            {
                std::lock_guard lock(mutex_);
                if (!device.subscribed.insert(characteristic).second) continue;
            }
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
    std::lock_guard lock(mutex_);
    for (auto& [name, device] : devices_) {
        const auto adapter = adapters_.find(device.adapter);
        if (!device.connected || !device.subscribed.contains(path) || adapter == adapters_.end() ||
            adapter->second.owner != message.getSender()) {
            continue;
        }
        device.received.push_back(placeOf(path) + " " + hexOf(value));
    }
    changed_.notify_all();
}

std::string FakeBluez::characteristicPath(const std::string& device, const std::string& place) {
    std::lock_guard lock(mutex_);
    const std::string& root = adapters_.at(devices_.at(device).adapter).root;
    return fmt::format("{}/service{:02}/characteristic{:02}", root, place[0] - '0', place[2] - '0');
}

std::string FakeBluez::call(const std::string& device, const std::string& path,
                            const char* interface, const char* method,
                            const std::optional<Bytes>& value, unsigned offset) {
    std::string answer;
    run([&] {
        const Properties options = {{"device", sdbus::Variant(sdbus::ObjectPath(device))},
                                    {"offset", sdbus::Variant(static_cast<std::uint16_t>(offset))},
                                    {"link", sdbus::Variant(std::string("LE"))}};
        const std::string owner = adapters_.at(devices_.at(device).adapter).owner;
        const auto proxy = sdbus::createProxy(*bus_, owner, path);
        try {
            Bytes read;
            if (value) {
                proxy->callMethod(method).onInterface(interface).withArguments(*value, options);
            } else {
                proxy->callMethod(method)
                    .onInterface(interface)
                    .withArguments(options)
                    .storeResultsTo(read);
            }
            answer = hexOf(read);
        } catch (const sdbus::Error& error) {
            answer = "<" + error.getName() + ">";
        }
    });
    return answer;
}

std::string FakeBluez::read(const std::string& device, const std::string& place, unsigned offset) {
    return call(device, characteristicPath(device, place), kGattCharacteristic, "ReadValue",
                std::nullopt, offset);
}

std::string FakeBluez::write(const std::string& device, const std::string& place,
                             const Bytes& value) {
    return call(device, characteristicPath(device, place), kGattCharacteristic, "WriteValue", value,
                0);
}

std::string FakeBluez::readDescriptor(const std::string& device, const std::string& place) {
    return call(device, characteristicPath(device, place) + "/descriptor00", kGattDescriptor,
                "ReadValue", std::nullopt, 0);
}

std::vector<std::string> FakeBluez::received(const std::string& device, std::size_t count) {
    await([&] { return devices_.at(device).received.size() >= count; });
    std::lock_guard lock(mutex_);
    return devices_.at(device).received;
}

std::vector<std::string> FakeBluez::takeReceived(const std::string& device) {
    std::lock_guard lock(mutex_);
    return std::exchange(devices_.at(device).received, {});
}

std::string FakeBluez::application(const std::string& adapter) {
    await([&] { return !adapters_.at(adapterPath(adapter)).listing.empty(); });
    std::lock_guard lock(mutex_);
    return fmt::format("{}", fmt::join(adapters_.at(adapterPath(adapter)).listing, "\n"));
}

std::string FakeBluez::advertisement(const std::string& adapter) {
    awaitOnAir(adapter);
    std::lock_guard lock(mutex_);
    return adapters_.at(adapterPath(adapter)).advertisement;
}

bool FakeBluez::awaitOnAir(const std::string& adapter) {
    return await([&] {
        const auto found = adapters_.find(adapterPath(adapter));
        return found != adapters_.end() && found->second.onAir;
    });
}

bool FakeBluez::awaitDisconnected(const std::string& device) {
    return await([&] { return !devices_.at(device).connected; });
}

int FakeBluez::applicationsRegistered() {
    std::lock_guard lock(mutex_);
    return applications_;
}

int FakeBluez::advertisementsRegistered() {
    std::lock_guard lock(mutex_);
    return advertisements_;
}

bool FakeBluez::isConnected(const std::string& device) {
    std::lock_guard lock(mutex_);
    return devices_.at(device).connected;
}

bool FakeBluez::awaitAgent() {
    return await([&] { return !agentOwner_.empty(); });
}

}  // namespace tandrel
