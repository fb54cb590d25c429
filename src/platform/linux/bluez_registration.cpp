#include "platform/linux/bluez_registration.h"

#include <fmt/format.h>

#include "base/log.h"

namespace tandrel::bluez {
namespace {

using namespace std::chrono_literals;

// The daemon reads all our objects meanwhile.
constexpr auto kLongestAnswer = 10s;

}  // namespace

Registration::Registration(sdbus::IConnection& bus, std::string adapter,
                           const Publication& publication, GattRequests& requests,
                           std::function<void(const std::optional<std::string>&)> report)
    : adapter_(std::move(adapter)),
      gatt_(bus, "/tandrel/" + shortName(adapter_), publication.services, requests),
      advertisement_(bus, "/tandrel/advertisement/" + shortName(adapter_), publication.localName,
                     publication.serviceUuids),
      report_(std::move(report)),
      proxy_(sdbus::createProxy(bus, kService, adapter_)) {}

Registration::~Registration() {
    try {
        if (mayBeRegistered_) unregisterAdvertisement();
        if (application_ == Step::none) return;
        proxy_->callMethod("UnregisterApplication")
            .onInterface(kGattManager)
            .withArguments(sdbus::ObjectPath(gatt_.root()))
            .dontExpectReply();
    } catch (const sdbus::Error&) {
        // Without the bus nothing of ours is registered.
    }
}

void Registration::stopAdvertising() {
    wanted_ = false;
    if (mayBeRegistered_) unregisterAdvertisement();
}

// Nothing is waited for: whether it was still there doesn't matter.
void Registration::unregisterAdvertisement() {
    proxy_->callMethod("UnregisterAdvertisement")
        .onInterface(kAdvertisingManager)
        .withArguments(sdbus::ObjectPath(advertisement_.path()))
        .dontExpectReply();
    mayBeRegistered_ = false;
    advertised_ = Step::none;
}

// The kernel drops the advertisement of an adapter that is switched off, and the daemon goes on
// counting it as active.
void Registration::advance(bool powered) {
    if (!powered && powered_) advertised_ = Step::none;
    powered_ = powered;
    if (!powered_ || !wanted_) return;
    if (application_ == Step::none) return registerApplication();
    if (application_ == Step::done && advertised_ == Step::none) registerAdvertisement();
}

void Registration::registerApplication() {
    application_ = Step::pending;
    proxy_->callMethodAsync("RegisterApplication")
        .onInterface(kGattManager)
        .withTimeout(kLongestAnswer)
        .withArguments(sdbus::ObjectPath(gatt_.root()), Properties{})
        .uponReplyInvoke([this](const sdbus::Error* error) {
            // After an answer that came too late it is there already.
            if (error != nullptr && error->getName() != "org.bluez.Error.AlreadyExists") {
                application_ = Step::none;
                return failed("take the keyboard's services", *error);
            }
            application_ = Step::done;
            advance(powered_);
        });
}

void Registration::registerAdvertisement() {
    if (mayBeRegistered_) unregisterAdvertisement();
    mayBeRegistered_ = true;
    advertised_ = Step::pending;
    proxy_->callMethodAsync("RegisterAdvertisement")
        .onInterface(kAdvertisingManager)
        .withTimeout(kLongestAnswer)
        .withArguments(sdbus::ObjectPath(advertisement_.path()), Properties{})
        .uponReplyInvoke([this](const sdbus::Error* error) {
            // Switched off meanwhile: whatever came of it has ended with that.
            if (advertised_ == Step::none) return advance(powered_);
            advertised_ = error == nullptr ? Step::done : Step::none;
            if (error != nullptr) return failed("advertise it", *error);
            report_(std::nullopt);
        });
}

void Registration::failed(const char* what, const sdbus::Error& error) {
    const std::string sentence =
        fmt::format("the Bluetooth service does not {} on {}: {}", what, shortName(adapter_),
                    error.getMessage().empty() ? error.getName() : error.getMessage());
    log("bluetooth: " + sentence);
    report_(sentence);
}

}  // namespace tandrel::bluez
