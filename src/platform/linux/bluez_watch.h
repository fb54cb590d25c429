#pragma once

#include <functional>
#include <memory>
#include <string>

#include <sdbus-c++/sdbus-c++.h>

#include "platform/linux/bluez_names.h"
#include "platform/linux/bluez_objects.h"

namespace tandrel::bluez {

// Keeps what bluetoothd's adapters and devices are, from its signals. Belongs to the thread of its
// connection.
class Watch {
 public:
    enum class Daemon { unknown, absent, starting, present };

    // `changed` follows every change of the daemon, an adapter or a device; `forbidden` a refusal
    // of the bus to let us talk to the daemon. The connection outlives this object.
    Watch(sdbus::IConnection& bus, std::function<void()> changed);

    Daemon daemon() const { return daemon_; }
    bool isForbidden() const { return forbidden_; }
    const Objects& objects() const { return objects_; }

 private:
    void onOwnerChanged(sdbus::Message& message);
    void onSignal(sdbus::Message& message);
    void daemonAppeared();
    void fetchObjects();
    void add(const std::string& path, const Interfaces& interfaces);
    void remove(const std::string& path, const std::vector<std::string>& interfaces);
    void update(const std::string& path, const std::string& interface,
                const Properties& properties);

    sdbus::IConnection& bus_;
    const std::function<void()> changed_;
    std::unique_ptr<sdbus::IProxy> root_;
    std::unique_ptr<sdbus::IProxy> bus1_;
    Daemon daemon_ = Daemon::unknown;
    bool forbidden_ = false;
    Objects objects_;
};

}  // namespace tandrel::bluez
