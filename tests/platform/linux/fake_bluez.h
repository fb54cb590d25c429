#pragma once

#include <condition_variable>
#include <future>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>

#include "base/bytes.h"
#include "platform/linux/bluez_names.h"
#include "platform/linux/bus_loop.h"

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
    void restart() {
        vanish();
        appear();
    }
    // Answers nothing until `resume`.
    void stall();
    void resume();
    void refuseAdvertisements(int count);
    // The computer sleeps and wakes, which the login manager tells; advertisements are lost.
    void sleepAndWake();

    // A phone, or another device; the result is its object path.
    std::string addDevice(const std::string& address, const std::string& adapter = "hci0",
                          const std::vector<std::string>& uuids = {});
    // None of our business: a headset, or a phone that is connected for something else.
    void connectElsewhere(const std::string& device);
    // False when nothing is on the air that it could connect to. A phone that subscribed once is
    // still subscribed.
    bool connect(const std::string& device);
    void disconnect(const std::string& device);
    // Connects, pairs, reads the report map and subscribes to everything, once it is on the air.
    void use(const std::string& device);
    void subscribe(const std::string& device);
    // False when our agent refused.
    bool pair(const std::string& device);

    // The characteristics are named by their place in the application: "1/0" is the first one of
    // the second service. An error is its D-Bus name in angle brackets, a value in hexadecimal.
    std::string read(const std::string& device, const std::string& place, unsigned offset = 0);
    std::string write(const std::string& device, const std::string& place, const Bytes& value);
    std::string readDescriptor(const std::string& device, const std::string& place);

    // What reached the device as notifications, "place hex"; waits until `count` have come.
    std::vector<std::string> received(const std::string& device, std::size_t count);
    std::vector<std::string> takeReceived(const std::string& device);
    // Everything published, an item a line, in the order in which it is listed.
    std::string application(const std::string& adapter);
    std::string advertisement(const std::string& adapter);
    bool awaitOnAir(const std::string& adapter = "hci0");
    bool awaitDisconnected(const std::string& device);
    // Over all adapters since the start.
    int applicationsRegistered();
    int advertisementsRegistered();
    bool awaitAgent();
    bool isConnected(const std::string& device);

 private:
    struct Adapter {
        std::unique_ptr<sdbus::IObject> object;
        bool powered = true;
        bool onAir = false;
        std::string owner;                       // of the application
        std::string root;                        // its path
        std::vector<std::string> listing;        // of the application
        std::map<std::string, int> subscribers;  // by path of the characteristic
        std::string advertisement;
        std::string advertisementPath;
    };
    struct Device {
        std::unique_ptr<sdbus::IObject> object;
        std::string adapter, address;
        std::vector<std::string> uuids;
        bool connected = false;
        bool resolved = false;
        bool paired = false;
        bool wasPaired = false;
        std::set<std::string> subscribed;
        std::vector<std::string> received;
    };

    void run(std::function<void()> task);
    template <typename Predicate>
    bool await(Predicate predicate) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, std::chrono::seconds(10), predicate);
    }

    void makeAdapter(const std::string& path, AdapterTraits traits);
    void makeDevice(const std::string& path);
    void exportDevice(const std::string& path);
    void registerApplication(const std::string& path, sdbus::MethodCall call);
    void registerAdvertisement(const std::string& path, sdbus::MethodCall call);
    void listen(sdbus::Message& message);
    void setConnected(const std::string& device, bool connected, bool resolved);
    void emitDevice(const std::string& device, const std::vector<std::string>& properties);
    std::string characteristicPath(const std::string& device, const std::string& place);
    std::string call(const std::string& device, const std::string& path, const char* interface,
                     const char* method, const std::optional<Bytes>& value, unsigned offset);

    std::mutex mutex_;
    std::condition_variable changed_;
    int applications_ = 0;
    int advertisements_ = 0;
    int refusals_ = 0;
    std::map<std::string, Adapter> adapters_;  // by path; changed on the loop's thread under mutex_
    std::map<std::string, Device> devices_;
    std::string agentOwner_, agentPath_;

    sdbus::IConnection* bus_ = nullptr;
    std::unique_ptr<sdbus::IObject> root_;
    std::unique_ptr<sdbus::IObject> manager_;
    std::map<std::string, AdapterTraits> adapterTraits_;
    std::optional<std::promise<void>> stall_;
    std::unique_ptr<BusLoop> loop_;
};

}  // namespace tandrel
