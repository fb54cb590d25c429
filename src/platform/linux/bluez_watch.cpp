#include "platform/linux/bluez_watch.h"

#include <algorithm>
#include <array>

#include <fmt/format.h>

#include "base/log.h"

namespace tandrel::bluez {
namespace {

using namespace std::chrono_literals;
using ManagedObjects = std::map<sdbus::ObjectPath, Interfaces>;

constexpr auto kLongestReply = 10s;
constexpr auto kBusName = "org.freedesktop.DBus";
// More is no computer's; a daemon that reports more is not believed.
constexpr std::size_t kMostDevices = 4096;

// What a device that serves this computer says it offers: Headset, Audio Sink, Handsfree, HID (both
// kinds of Bluetooth), as the beginnings of its services' UUIDs.
constexpr std::array<std::string_view, 5> kAccessoryServices = {"00001108", "0000110b", "0000111e",
                                                                "00001124", "00001812"};

bool offersAccessory(const std::vector<std::string>& uuids) {
    return std::ranges::any_of(uuids, [](const std::string& uuid) {
        return std::ranges::any_of(kAccessoryServices,
                                   [&](std::string_view start) { return uuid.starts_with(start); });
    });
}

template <typename T>
void assign(T& field, const Properties& properties, const std::string& name) {
    if (auto value = property<T>(properties, name)) field = *std::move(value);
}

void assign(Adapter& adapter, const Properties& properties) {
    assign(adapter.address, properties, "Address");
    assign(adapter.powered, properties, "Powered");
}

void assign(Device& device, const Properties& properties) {
    if (const auto adapter = property<sdbus::ObjectPath>(properties, "Adapter")) {
        device.adapter = *adapter;
    }
    assign(device.address, properties, "Address");
    assign(device.name, properties, "Alias");
    assign(device.connected, properties, "Connected");
    assign(device.servicesResolved, properties, "ServicesResolved");
    assign(device.paired, properties, "Paired");
    if (const auto uuids = property<std::vector<std::string>>(properties, "UUIDs")) {
        device.isAccessory = offersAccessory(*uuids);
    }
}

}  // namespace

Watch::Watch(sdbus::IConnection& bus, std::function<void()> changed)
    : bus_(bus), changed_(std::move(changed)) {
    const auto guarded = [](auto handle) {
        return [handle](sdbus::Message& message) {
            try {
                handle(message);
            } catch (const sdbus::Error& error) {
                log("bluetooth: a message of another form than expected: " + error.getMessage());
            }
        };
    };
    bus_.addMatch(fmt::format("type='signal',sender='{0}',interface='{0}',"
                              "member='NameOwnerChanged',arg0='{1}'",
                              kBusName, kService),
                  guarded([this](sdbus::Message& message) { onOwnerChanged(message); }),
                  sdbus::floating_slot);
    bus_.addMatch(fmt::format("type='signal',sender='{}'", kService),
                  guarded([this](sdbus::Message& message) { onSignal(message); }),
                  sdbus::floating_slot);
    root_ = sdbus::createProxy(bus_, kService, "/");
    bus1_ = sdbus::createProxy(bus_, kBusName, "/org/freedesktop/DBus");
    bus1_->callMethodAsync("NameHasOwner")
        .onInterface(kBusName)
        .withArguments(std::string(kService))
        .uponReplyInvoke([this](const sdbus::Error* error, bool owned) {
            if (daemon_ != Daemon::unknown) return;
            if (error == nullptr && owned) return daemonAppeared();
            daemon_ = Daemon::absent;
            changed_();
        });
}

void Watch::onOwnerChanged(sdbus::Message& message) {
    std::string name, before, now;
    message >> name >> before >> now;
    objects_ = {};
    daemon_ = Daemon::absent;
    changed_();  // the registrations of before are void, also when one daemon takes over at once
    if (!now.empty()) daemonAppeared();
}

void Watch::daemonAppeared() {
    daemon_ = Daemon::starting;
    forbidden_ = false;
    fetchObjects();
}

void Watch::fetchObjects() {
    root_->callMethodAsync("GetManagedObjects")
        .onInterface(kObjectManager)
        .withTimeout(kLongestReply)
        .uponReplyInvoke([this](const sdbus::Error* error, const ManagedObjects& objects) {
            if (daemon_ != Daemon::starting) return;
            if (error != nullptr) {
                log("bluetooth: bluetoothd does not say what it has: " + error->getMessage());
                forbidden_ = error->getName() == "org.freedesktop.DBus.Error.AccessDenied";
                if (forbidden_) return changed_();
                if (error->getName() == "org.freedesktop.DBus.Error.NoReply" ||
                    error->getName() == "org.freedesktop.DBus.Error.Timeout") {
                    return fetchObjects();  // paced by the time-out
                }
            }
            daemon_ = Daemon::present;
            for (const auto& [path, interfaces] : objects) add(path, interfaces);
            changed_();
        });
}

void Watch::onSignal(sdbus::Message& message) {
    if (daemon_ == Daemon::absent) return;
    const std::string interface = message.getInterfaceName();
    const std::string member = message.getMemberName();
    if (interface == kObjectManager && member == "InterfacesAdded") {
        sdbus::ObjectPath path;
        Interfaces interfaces;
        message >> path >> interfaces;
        add(path, interfaces);
    } else if (interface == kObjectManager && member == "InterfacesRemoved") {
        sdbus::ObjectPath path;
        std::vector<std::string> interfaces;
        message >> path >> interfaces;
        remove(path, interfaces);
    } else if (interface == kProperties && member == "PropertiesChanged") {
        std::string of;
        Properties properties;
        message >> of >> properties;
        update(message.getPath(), of, properties);
    } else {
        return;
    }
    if (daemon_ == Daemon::present) changed_();
}

void Watch::add(const std::string& path, const Interfaces& interfaces) {
    for (const auto& [name, properties] : interfaces) {
        if (name == kAdapter) assign(objects_.adapters[path], properties);
        if (name == kAdvertisingManager) objects_.adapters[path].canBePeripheral = true;
        if (name == kDevice && objects_.devices.size() < kMostDevices) {
            assign(objects_.devices[path], properties);
        }
    }
}

void Watch::remove(const std::string& path, const std::vector<std::string>& interfaces) {
    for (const std::string& name : interfaces) {
        if (name == kAdapter) objects_.adapters.erase(path);
        if (name == kDevice) objects_.devices.erase(path);
        const auto adapter = objects_.adapters.find(path);
        if (name == kAdvertisingManager && adapter != objects_.adapters.end()) {
            adapter->second.canBePeripheral = false;
        }
    }
}

// A property that became invalid counts as unchanged: bluetoothd invalidates only such as are of no
// use here.
void Watch::update(const std::string& path, const std::string& interface,
                   const Properties& properties) {
    const auto adapter = objects_.adapters.find(path);
    if (interface == kAdapter && adapter != objects_.adapters.end()) {
        assign(adapter->second, properties);
    }
    const auto device = objects_.devices.find(path);
    if (interface == kDevice && device != objects_.devices.end()) {
        assign(device->second, properties);
    }
}

}  // namespace tandrel::bluez
