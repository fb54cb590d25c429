#include "platform/linux/fake_bluez.h"

#include <algorithm>

#include <fmt/format.h>
#include <fmt/ranges.h>

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

}  // namespace

FakeBluez::FakeBluez() {
    std::promise<void> opened;
    loop_ = std::make_unique<BusLoop>("fake bluez",
                                      BusLoop::Events{[&](BusLoop&, sdbus::IConnection& bus) {
                                                          bus_ = &bus;
                                                          opened.set_value();
                                                      },
                                                      [this] {
                                                          adapters_.clear();
                                                          devices_.clear();
                                                          manager_.reset();
                                                          root_.reset();
                                                      },
                                                      [](const std::string&) {}});
    opened.get_future().wait();
    run([this] {
        bus_->addMatch(
            "type='signal',interface='org.freedesktop.DBus.Properties',"
            "member='PropertiesChanged'",
            [this](sdbus::Message& message) { listen(message); }, sdbus::floating_slot);
    });
}

FakeBluez::~FakeBluez() { resume(); }

void FakeBluez::run(std::function<void()> task) {
    std::packaged_task<void()> packaged(std::move(task));
    auto done = packaged.get_future();
    loop_->post([packaged = std::move(packaged)]() mutable { packaged(); });
    done.get();
}

void FakeBluez::appear() {
    run([this] {
        root_ = sdbus::createObject(*bus_, "/");
        root_->addObjectManager();
        manager_ = sdbus::createObject(*bus_, kManagerPath);
        manager_->registerMethod(kAgentManager, "RegisterAgent", "os", "",
                                 [this](sdbus::MethodCall call) {
                                     sdbus::ObjectPath path;
                                     std::string capability;
                                     call >> path >> capability;
                                     std::lock_guard lock(mutex_);
                                     agentOwner_ = call.getSender();
                                     agentPath_ = path;
                                     changed_.notify_all();
                                     call.createReply().send();
                                 });
        manager_->registerMethod("RequestDefaultAgent")
            .onInterface(kAgentManager)
            .implementedAs([](const sdbus::ObjectPath&) {});
        manager_->finishRegistration();
        for (const auto& [path, traits] : adapterTraits_) makeAdapter(path, traits);
        for (auto& [path, device] : devices_) makeDevice(path);
        bus_->requestName(kService);
    });
}

void FakeBluez::vanish() {
    run([this] {
        bus_->releaseName(kService);
        std::lock_guard lock(mutex_);
        adapters_.clear();
        for (auto& [path, device] : devices_) {
            device.object.reset();
            device.connected = device.resolved = false;
            device.subscribed.clear();
        }
        agentOwner_.clear();
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
    run([this] {
        {
            std::lock_guard lock(mutex_);
            for (auto& [path, adapter] : adapters_) adapter.onAir = false;
        }
        const auto manager = sdbus::createObject(*bus_, "/org/freedesktop/login1");
        for (const bool going : {true, false}) {
            auto signal =
                manager->createSignal("org.freedesktop.login1.Manager", "PrepareForSleep");
            signal << going;
            manager->emitSignal(signal);
        }
    });
}

void FakeBluez::refuseAdvertisements(int count) {
    std::lock_guard lock(mutex_);
    refusals_ = count;
}

void FakeBluez::addAdapter(const std::string& name, AdapterTraits traits) {
    run([&] {
        adapterTraits_[pathOf(name)] = traits;
        if (!root_) return;
        makeAdapter(pathOf(name), traits);
        adapters_.at(pathOf(name)).object->emitInterfacesAddedSignal();
    });
}

void FakeBluez::removeAdapter(const std::string& name) {
    run([&] {
        adapterTraits_.erase(pathOf(name));
        if (!root_) return;
        std::vector<std::string> gone;
        for (auto& [path, device] : devices_) {
            if (device.adapter == pathOf(name)) gone.push_back(path);
        }
        std::lock_guard lock(mutex_);
        for (const auto& path : gone) {
            devices_.at(path).object->emitInterfacesRemovedSignal({kDevice});
            devices_.erase(path);
        }
        adapters_.at(pathOf(name))
            .object->emitInterfacesRemovedSignal({kAdapter, kGattManager, kAdvertisingManager});
        adapters_.erase(pathOf(name));
    });
}

void FakeBluez::makeAdapter(const std::string& path, AdapterTraits traits) {
    Adapter adapter;
    adapter.powered = traits.powered;
    adapter.object = sdbus::createObject(*bus_, path);
    sdbus::IObject& object = *adapter.object;
    addConstant(object, kAdapter, "Address", std::string("00:AA:01:00:00:00"));
    addConstant(object, kAdapter, "Pairable", true);
    object.registerProperty("Powered").onInterface(kAdapter).withGetter(
        [this, path] { return adapters_.at(path).powered; });
    if (traits.peripheral) {
        object.registerMethod(
            kGattManager, "RegisterApplication", "oa{sv}", "",
            [this, path](sdbus::MethodCall call) { registerApplication(path, std::move(call)); });
        object.registerMethod("UnregisterApplication")
            .onInterface(kGattManager)
            .implementedAs([this, path](const sdbus::ObjectPath&) {
                std::lock_guard lock(mutex_);
                adapters_.at(path).owner.clear();
                adapters_.at(path).listing.clear();
            });
        object.registerMethod(
            kAdvertisingManager, "RegisterAdvertisement", "oa{sv}", "",
            [this, path](sdbus::MethodCall call) { registerAdvertisement(path, std::move(call)); });
        object.registerMethod("UnregisterAdvertisement")
            .onInterface(kAdvertisingManager)
            .implementedAs([this, path](const sdbus::ObjectPath&) {
                std::lock_guard lock(mutex_);
                Adapter& at = adapters_.at(path);
                if (at.advertisementPath.empty()) {
                    throw sdbus::Error("org.bluez.Error.DoesNotExist", "Does Not Exist");
                }
                at.advertisementPath.clear();
                at.onAir = false;
            });
    }
    object.finishRegistration();
    std::lock_guard lock(mutex_);
    adapters_[path] = std::move(adapter);
}

void FakeBluez::registerApplication(const std::string& path, sdbus::MethodCall call) {
    sdbus::ObjectPath root;
    Properties options;
    call >> root >> options;
    // Read by hand: a map would lose the order, in which handles are given out.
    auto owner = sdbus::createProxy(*bus_, call.getSender(), root);
    auto request = owner->createMethodCall(kObjectManager, "GetManagedObjects");
    auto reply = owner->callMethod(request, 0);
    std::vector<std::string> listing;
    bool refused = false;
    reply.enterContainer("{oa{sa{sv}}}");
    while (reply.enterDictEntry("oa{sa{sv}}")) {
        sdbus::ObjectPath object;
        Interfaces interfaces;
        reply >> object >> interfaces;
        reply.exitDictEntry();
        for (const auto& [interface, properties] : interfaces) {
            if (!interface.starts_with("org.bluez.")) continue;
            const std::string uuid = property<std::string>(properties, "UUID").value_or("?");
            refused = refused || uuid.starts_with("00001800") || uuid.starts_with("00001801");
            const auto flags = properties.find("Flags");
            listing.push_back(fmt::format("{} {} {}", object.substr(root.size()), uuid,
                                          flags == properties.end() ? "" : textOf(flags->second)));
        }
    }
    std::lock_guard lock(mutex_);
    if (refused) {
        return call
            .createErrorReply(
                sdbus::Error("org.bluez.Error.Failed", "Failed to create entry in database"))
            .send();
    }
    Adapter& adapter = adapters_.at(path);
    adapter.owner = call.getSender();
    adapter.root = root;
    adapter.listing = listing;
    adapter.subscribers.clear();
    ++applications_;
    changed_.notify_all();
    call.createReply().send();
}

void FakeBluez::registerAdvertisement(const std::string& path, sdbus::MethodCall call) {
    sdbus::ObjectPath object;
    Properties options;
    call >> object >> options;
    const auto refuse = [&](const char* name, const char* why) {
        call.createErrorReply(sdbus::Error(name, why)).send();
    };
    {
        std::lock_guard lock(mutex_);
        if (refusals_ > 0) {
            --refusals_;
            return refuse("org.bluez.Error.NotPermitted", "Maximum advertisements reached");
        }
        if (!adapters_.at(path).advertisementPath.empty()) {
            return refuse("org.bluez.Error.AlreadyExists", "Already Exists");
        }
    }
    auto owner = sdbus::createProxy(*bus_, call.getSender(), object);
    Properties properties;
    owner->callMethod("GetAll")
        .onInterface(kProperties)
        .withArguments(std::string(kAdvertisement))
        .storeResultsTo(properties);
    std::string text;
    for (const auto& [name, value] : properties) text += name + "=" + textOf(value) + "\n";
    std::lock_guard lock(mutex_);
    Adapter& adapter = adapters_.at(path);
    adapter.advertisement = text;
    adapter.advertisementPath = object;
    adapter.onAir = adapter.powered;
    ++advertisements_;
    changed_.notify_all();
    call.createReply().send();
}

void FakeBluez::setPowered(const std::string& name, bool powered) {
    std::vector<std::string> connected;
    run([&] {
        adapterTraits_[pathOf(name)].powered = powered;
        {
            std::lock_guard lock(mutex_);
            Adapter& adapter = adapters_.at(pathOf(name));
            adapter.powered = powered;
            adapter.onAir = false;
            for (const auto& [path, device] : devices_) {
                if (device.adapter == pathOf(name) && device.connected) connected.push_back(path);
            }
        }
        adapters_.at(pathOf(name)).object->emitPropertiesChangedSignal(kAdapter, {"Powered"});
    });
    for (const auto& path : connected) disconnect(path);
}

void FakeBluez::announce(const std::string& path, const char* interface,
                         const Properties& properties) {
    run([&] {
        sdbus::IObject& object =
            devices_.contains(path) ? *devices_.at(path).object : *adapters_.at(path).object;
        auto signal = object.createSignal(kProperties, "PropertiesChanged");
        signal << std::string(interface) << properties << std::vector<std::string>{};
        object.emitSignal(signal);
    });
}

}  // namespace tandrel
