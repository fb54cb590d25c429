#pragma once

#include <future>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>

#include "base/bytes.h"
#include "platform/linux/bluez_names.h"
#include "platform/linux/bus_loop.h"
#include "support/eventually.h"

namespace tandrel {

// bluetoothd on a test's own bus, with the phones in its reach: what it does as documented, and
// what it does besides. It does not say who subscribed, and says it for the first one only; a
// subscription outlives the connection; a notification goes to all who subscribed; an adapter that
// is switched off loses its advertisement while the daemon goes on counting it; a restarted daemon
// remembers no subscription.
class FakeBluez {
 public:
    FakeBluez();
    ~FakeBluez();
    FakeBluez(const FakeBluez&) = delete;
    FakeBluez& operator=(const FakeBluez&) = delete;

    struct AdapterTraits {
        bool powered = true;
        bool peripheral = true;
    };
    void addAdapter(const std::string& name, AdapterTraits traits);
    void addAdapter(const std::string& name) { addAdapter(name, {}); }
    void removeAdapter(const std::string& name);
    void setPowered(const std::string& name, bool powered);
    // A property that is not what it should be.
    void announce(const std::string& path, const char* interface,
                  const bluez::Properties& properties);

    void appear();  // at first too
    void vanish();  // the process ends
    // Answers nothing until `resume`.
    void stall();
    void resume();
    void refuseAdvertisements(int count) {
        on([&] { refusals_ = count; });
    }
    // The computer sleeps and wakes, which the login manager tells; advertisements are lost.
    void sleepAndWake();

    // A phone, or another device; the result is its object path.
    std::string addDevice(const std::string& address, const std::string& adapter = "hci0",
                          const std::vector<std::string>& uuids = {});
    // None of our business: a headset, or a phone that is connected for something else.
    void connectElsewhere(const std::string& device) {
        on([&] { setConnected(device, true); });
    }
    // False when nothing is on the air that it could connect to. A phone that subscribed once is
    // still subscribed.
    bool connect(const std::string& device);
    void disconnect(const std::string& device) {
        on([&] { setConnected(device, false); });
    }
    // Connects, pairs, reads the report map and subscribes to everything, once it is on the air.
    void use(const std::string& device);
    void subscribe(const std::string& device);
    // False when our agent refused.
    bool pair(const std::string& device);

    // The characteristics are named by their place in the application: "1/0" is the first one of
    // the second service, "1/0/0" its first descriptor. An error is its D-Bus name in angle
    // brackets, a value in hexadecimal.
    std::string read(const std::string& device, const std::string& place, unsigned offset = 0) {
        return call(device, place, "ReadValue", std::nullopt, offset);
    }
    std::string write(const std::string& device, const std::string& place, const Bytes& value) {
        return call(device, place, "WriteValue", value, 0);
    }

    // What reached the device as notifications, "place hex"; waits until `count` have come.
    std::vector<std::string> received(const std::string& device, std::size_t count);
    void forgetReceived(const std::string& device) {
        on([&] { devices_.at(device).received.clear(); });
    }
    // Everything published, an item a line, in the order in which it is listed; then what is
    // advertised.
    std::string published(const std::string& adapter);
    bool awaitOnAir(const std::string& adapter = "hci0");
    bool awaitDisconnected(const std::string& device) {
        return eventually([&] { return !isConnected(device); });
    }
    // Over all adapters since the start.
    int applicationsRegistered() {
        return on([&] { return applications_; });
    }
    int advertisementsRegistered() {
        return on([&] { return advertisements_; });
    }
    bool isConnected(const std::string& device) {
        return on([&] { return devices_.at(device).connected; });
    }

 private:
    struct Adapter {
        AdapterTraits traits;
        std::unique_ptr<sdbus::IObject> object = {};  // while the daemon runs
        bool onAir = false;
        std::string owner = {};                       // of the application
        std::string root = {};                        // its path
        std::vector<std::string> listing = {};        // of the application
        std::map<std::string, int> subscribers = {};  // by path of the characteristic
        std::string advertisement = {};
        std::string advertisementPath = {};
    };
    struct Device {
        std::string adapter, address;
        std::vector<std::string> uuids;
        std::unique_ptr<sdbus::IObject> object = {};
        bool connected = false;
        bool paired = false;
        std::set<std::string> subscribed = {};
        std::vector<std::string> received = {};
    };

    // Everything happens on the loop's thread; waits for the result.
    template <typename Function>
    std::invoke_result_t<Function> on(Function function) {
        std::packaged_task<std::invoke_result_t<Function>()> task(std::move(function));
        auto done = task.get_future();
        loop_->post([task = std::move(task)]() mutable { task(); });
        return done.get();
    }
    void exportAdapter(const std::string& path);
    void exportDevice(const std::string& path);
    void registerApplication(Adapter& adapter, const std::string& root);
    void registerAdvertisement(Adapter& adapter, const std::string& path);
    void listen(sdbus::Message& message);
    void setConnected(const std::string& device, bool connected);
    std::string call(const std::string& device, const std::string& place, const char* method,
                     const std::optional<Bytes>& value, unsigned offset);

    int applications_ = 0;
    int advertisements_ = 0;
    int refusals_ = 0;
    std::map<std::string, Adapter> adapters_;  // by path
    std::map<std::string, Device> devices_;
    std::string agentOwner_, agentPath_;

    sdbus::IConnection* bus_ = nullptr;
    std::unique_ptr<sdbus::IObject> root_;
    std::unique_ptr<sdbus::IObject> manager_;
    std::optional<std::promise<void>> stall_;
    std::unique_ptr<BusLoop> loop_;
};

}  // namespace tandrel
