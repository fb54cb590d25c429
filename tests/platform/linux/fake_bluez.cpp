#include "platform/linux/fake_bluez.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include "platform/linux/bus_service.h"

namespace tandrel {
namespace {

using namespace std::chrono_literals;
using namespace bluez;

std::string pathOf(const std::string& adapter) { return "/org/bluez/" + adapter; }

std::string textOf(const sdbus::Variant& value) {
    if (value.containsValueOfType<std::string>()) return value.get<std::string>();
    if (value.containsValueOfType<std::uint16_t>()) {
        return fmt::format("{:04x}", value.get<std::uint16_t>());
    }
    if (value.containsValueOfType<bool>()) return value.get<bool>() ? "yes" : "no";
    if (value.containsValueOfType<std::vector<std::string>>()) {
        return fmt::format("{}", fmt::join(value.get<std::vector<std::string>>(), "+"));
    }
    return "";
}

std::string callerOf(const sdbus::IObject& object) {
    return object.getCurrentlyProcessedMessage()->getSender();
}

}  // namespace

FakeBluez::FakeBluez() {
    std::promise<void> opened;
    const auto take = [&](BusLoop&, sdbus::IConnection& bus) {
        bus_ = &bus;
        opened.set_value();
    };
    loop_ = std::make_unique<BusLoop>("fake bluez",
                                      BusLoop::Events{take, [] {}, [](const std::string&) {}});
    opened.get_future().wait();
    on([this] {
        bus_->addMatch(
            "type='signal',interface='org.freedesktop.DBus.Properties',"
            "member='PropertiesChanged'",
            [this](sdbus::Message& message) { listen(message); }, sdbus::floating_slot);
    });
}

FakeBluez::~FakeBluez() {
    resume();
    on([this] {
        adapters_.clear();
        devices_.clear();
        manager_.reset();
        root_.reset();
    });
}

void FakeBluez::appear() {
    on([this] {
        root_ = sdbus::createObject(*bus_, "/");
        root_->addObjectManager();
        manager_ = sdbus::createObject(*bus_, kManagerPath);
        addMethod(*manager_, kAgentManager, "RegisterAgent",
                  [this](const sdbus::ObjectPath& path, const std::string&) {
                      agentOwner_ = callerOf(*manager_);
                      agentPath_ = path;
                  });
        addMethod(*manager_, kAgentManager, "RequestDefaultAgent", [](const sdbus::ObjectPath&) {});
        manager_->finishRegistration();
        for (const auto& [path, adapter] : adapters_) exportAdapter(path);
        for (const auto& [path, device] : devices_) exportDevice(path);
        bus_->requestName(kService);
    });
}

void FakeBluez::vanish() {
    on([this] {
        bus_->releaseName(kService);
        for (auto& [path, adapter] : adapters_) adapter = {.traits = adapter.traits};
        for (auto& [path, device] : devices_) {
            device.object.reset();
            device.connected = false;
            device.subscribed.clear();
        }
        manager_.reset();
        root_.reset();
    });
}

void FakeBluez::stall() {
    stall_.emplace();
    loop_->post([future = stall_->get_future().share()] { future.wait(); });
}

void FakeBluez::resume() {
    if (stall_) stall_->set_value();
    stall_.reset();
}

void FakeBluez::sleepAndWake() {
    on([this] {
        for (auto& [path, adapter] : adapters_) adapter.onAir = false;
        const auto manager = sdbus::createObject(*bus_, "/org/freedesktop/login1");
        for (const bool going : {true, false}) {
            auto signal =
                manager->createSignal("org.freedesktop.login1.Manager", "PrepareForSleep");
            signal << going;
            manager->emitSignal(signal);
        }
    });
}

void FakeBluez::addAdapter(const std::string& name, AdapterTraits traits) {
    on([&] {
        Adapter& adapter = adapters_[pathOf(name)];
        adapter.traits = traits;
        if (!root_) return;
        exportAdapter(pathOf(name));
        adapter.object->emitInterfacesAddedSignal();
    });
}

void FakeBluez::removeAdapter(const std::string& name) {
    on([&] {
        std::erase_if(devices_, [&](const auto& entry) {
            if (entry.second.adapter != pathOf(name)) return false;
            if (root_) entry.second.object->emitInterfacesRemovedSignal({kDevice});
            return true;
        });
        const auto adapter = adapters_.extract(pathOf(name));
        if (!root_) return;
        adapter.mapped().object->emitInterfacesRemovedSignal(
            {kAdapter, kGattManager, kAdvertisingManager});
    });
}

void FakeBluez::exportAdapter(const std::string& path) {
    Adapter& adapter = adapters_.at(path);
    adapter.object = sdbus::createObject(*bus_, path);
    sdbus::IObject& object = *adapter.object;
    addConstant(object, kAdapter, "Address", std::string("00:AA:01:00:00:00"));
    object.registerProperty("Powered").onInterface(kAdapter).withGetter(
        [&adapter] { return adapter.traits.powered; });
    if (adapter.traits.peripheral) {
        addMethod(object, kGattManager, "RegisterApplication",
                  [this, &adapter](const sdbus::ObjectPath& root, const Properties&) {
                      registerApplication(adapter, root);
                  });
        addMethod(object, kGattManager, "UnregisterApplication",
                  [&adapter](const sdbus::ObjectPath&) {
                      adapter.owner.clear();
                      adapter.listing.clear();
                  });
        addMethod(object, kAdvertisingManager, "RegisterAdvertisement",
                  [this, &adapter](const sdbus::ObjectPath& path, const Properties&) {
                      registerAdvertisement(adapter, path);
                  });
        addMethod(object, kAdvertisingManager, "UnregisterAdvertisement",
                  [&adapter](const sdbus::ObjectPath&) {
                      if (adapter.advertisementPath.empty()) {
                          throw sdbus::Error("org.bluez.Error.DoesNotExist", "Does Not Exist");
                      }
                      adapter.advertisementPath.clear();
                      adapter.onAir = false;
                  });
    }
    object.finishRegistration();
}

void FakeBluez::registerApplication(Adapter& adapter, const std::string& root) {
    adapter.owner = callerOf(*adapter.object);
    adapter.root = root;
    adapter.listing.clear();
    adapter.subscribers.clear();
    ++applications_;
    // Read by hand: a map would lose the order, in which handles are given out.
    auto owner = sdbus::createProxy(*bus_, adapter.owner, root);
    auto request = owner->createMethodCall(kObjectManager, "GetManagedObjects");
    auto reply = owner->callMethod(request, 0);
    reply.enterContainer("{oa{sa{sv}}}");
    while (reply.enterDictEntry("oa{sa{sv}}")) {
        sdbus::ObjectPath object;
        Interfaces interfaces;
        reply >> object >> interfaces;
        reply.exitDictEntry();
        for (const auto& [interface, properties] : interfaces) {
            if (!interface.starts_with("org.bluez.")) continue;
            const auto flags = property<std::vector<std::string>>(properties, "Flags");
            adapter.listing.push_back(
                fmt::format("{} {} {}", object.substr(root.size()),
                            property<std::string>(properties, "UUID").value_or("?"),
                            fmt::join(flags.value_or(std::vector<std::string>{}), "+")));
        }
    }
}

void FakeBluez::registerAdvertisement(Adapter& adapter, const std::string& path) {
    if (refusals_ > 0) {
        --refusals_;
        throw sdbus::Error("org.bluez.Error.NotPermitted", "Maximum advertisements reached");
    }
    if (!adapter.advertisementPath.empty()) {
        throw sdbus::Error("org.bluez.Error.AlreadyExists", "Already Exists");
    }
    Properties properties;
    sdbus::createProxy(*bus_, callerOf(*adapter.object), path)
        ->callMethod("GetAll")
        .onInterface(kProperties)
        .withArguments(std::string(kAdvertisement))
        .storeResultsTo(properties);
    adapter.advertisement.clear();
    for (const auto& [name, value] : properties) {
        adapter.advertisement += "\n" + name + "=" + textOf(value);
    }
    adapter.advertisementPath = path;
    adapter.onAir = adapter.traits.powered;
    ++advertisements_;
}

void FakeBluez::setPowered(const std::string& name, bool powered) {
    on([&] {
        Adapter& adapter = adapters_.at(pathOf(name));
        adapter.traits.powered = powered;
        adapter.onAir = false;
        adapter.object->emitPropertiesChangedSignal(kAdapter, {"Powered"});
        for (const auto& [path, device] : devices_) {
            if (device.adapter == pathOf(name) && device.connected) setConnected(path, false);
        }
    });
}

void FakeBluez::announce(const std::string& path, const char* interface,
                         const Properties& properties) {
    on([&] {
        sdbus::IObject& object =
            devices_.contains(path) ? *devices_.at(path).object : *adapters_.at(path).object;
        auto signal = object.createSignal(kProperties, "PropertiesChanged");
        signal << std::string(interface) << properties << std::vector<std::string>{};
        object.emitSignal(signal);
    });
}

}  // namespace tandrel
