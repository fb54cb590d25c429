#include "platform/linux/bluez_agent.h"

#include "base/log.h"
#include "platform/linux/bluez_names.h"

namespace tandrel::bluez {
namespace {

constexpr const char* kPath = "/tandrel/agent";

[[noreturn]] void refuse(const char* why) { throw sdbus::Error("org.bluez.Error.Rejected", why); }

}  // namespace

Agent::Agent(sdbus::IConnection& bus, std::function<bool(const std::string&)> mayPair)
    : mayPair_(std::move(mayPair)),
      object_(sdbus::createObject(bus, kPath)),
      manager_(sdbus::createProxy(bus, kService, kManagerPath)) {
    const auto method = [this](const char* name, auto implementation) {
        object_->registerMethod(name).onInterface(kAgent).implementedAs(std::move(implementation));
    };
    method("Release", [] {});
    method("Cancel", [] {});
    method("RequestAuthorization",
           [this](const sdbus::ObjectPath& device) { refuseUnlessAllowed(device); });
    method("RequestConfirmation",
           [this](const sdbus::ObjectPath& device, std::uint32_t) { refuseUnlessAllowed(device); });
    // Sound and the like of a device that is not trusted yet: a desktop's agent would ask.
    method("AuthorizeService", [](const sdbus::ObjectPath&, const std::string&) {
        refuse("Tandrel pairs phones for its keyboard and pointer only");
    });
    object_->finishRegistration();
}

void Agent::registerAt() {
    manager_->callMethodAsync("RegisterAgent")
        .onInterface(kAgentManager)
        .withArguments(sdbus::ObjectPath(kPath), std::string("NoInputNoOutput"))
        .uponReplyInvoke([](const sdbus::Error* error) {
            if (error != nullptr) log("bluetooth: can't answer pairing: " + error->getMessage());
        });
    manager_->callMethodAsync("RequestDefaultAgent")
        .onInterface(kAgentManager)
        .withArguments(sdbus::ObjectPath(kPath))
        .uponReplyInvoke([](const sdbus::Error* error) {
            if (error != nullptr) {
                log("bluetooth: another program answers pairing: " + error->getMessage());
            }
        });
}

void Agent::refuseUnlessAllowed(const std::string& device) const {
    if (mayPair_(device)) {
        log("bluetooth: pairing with " + device.substr(device.rfind('/') + 1));
        return;
    }
    log("bluetooth: pairing refused to " + device.substr(device.rfind('/') + 1) +
        ": another phone is connected");
    refuse("another phone is connected");
}

}  // namespace tandrel::bluez
