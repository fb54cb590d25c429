#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>

#include "platform/linux/bluez_advertisement.h"
#include "platform/linux/bluez_gatt_objects.h"

namespace tandrel::bluez {

// What is to be published: the same on every adapter.
struct Publication {
    std::vector<GattService> services;
    std::string localName;
    std::vector<std::string> serviceUuids;

    bool operator==(const Publication&) const = default;
};

// Our services and advertisement at one adapter, from RegisterApplication to the end. The
// application stays registered while the adapter is off; the advertisement is registered anew
// whenever the daemon may have lost it without saying so. Belongs to the connection's thread.
class Registration {
 public:
    // `report`: the outcome of each try to advertise; the error is a sentence. The connection and
    // `requests` outlive this object.
    Registration(sdbus::IConnection& bus, std::string adapter, const Publication& publication,
                 GattRequests& requests,
                 std::function<void(const std::optional<std::string>& error)> report);
    // Takes everything back.
    ~Registration();
    Registration(const Registration&) = delete;
    Registration& operator=(const Registration&) = delete;

    const std::string& adapter() const { return adapter_; }
    GattObjects& gatt() { return gatt_; }

    // Takes the next step if one is due. `powered`: an adapter that is off advertises nothing.
    void advance(bool powered);
    // The advertisement can't be trusted any more: after the computer slept.
    void readvertise() { advertised_ = Step::none; }
    void startAdvertising() { wanted_ = true; }
    void stopAdvertising();
    bool isAdvertised() const { return advertised_ == Step::done; }

 private:
    enum class Step { none, pending, done };

    void registerApplication();
    void registerAdvertisement();
    void unregisterAdvertisement();
    void failed(const char* what, const sdbus::Error& error);

    const std::string adapter_;
    GattObjects gatt_;
    Advertisement advertisement_;
    const std::function<void(const std::optional<std::string>&)> report_;
    const std::unique_ptr<sdbus::IProxy> proxy_;
    bool powered_ = false;
    bool wanted_ = true;
    Step application_ = Step::none;
    Step advertised_ = Step::none;
    bool mayBeRegistered_ = false;
};

}  // namespace tandrel::bluez
