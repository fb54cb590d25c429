#pragma once

#include <functional>
#include <memory>
#include <string>

#include <sdbus-c++/sdbus-c++.h>

namespace tandrel::bluez {

// Answers bluetoothd when a phone asks to be paired. This computer can neither show nor take a
// number here, so the phone's own dialogue is the one that a person confirms. While it lives it is
// the default agent; the desktop's is again afterwards.
class Agent {
 public:
    // `mayPair`: whether the device of this path may be paired now. The connection outlives this
    // object; on its thread.
    Agent(sdbus::IConnection& bus, std::function<bool(const std::string& device)> mayPair);

    // Tells the daemon, which forgets it when it restarts.
    void registerAt();

 private:
    void refuseUnlessAllowed(const std::string& device) const;

    const std::function<bool(const std::string&)> mayPair_;
    const std::unique_ptr<sdbus::IObject> object_;
    const std::unique_ptr<sdbus::IProxy> manager_;
};

}  // namespace tandrel::bluez
