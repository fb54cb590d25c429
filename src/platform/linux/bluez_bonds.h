#pragma once

#include <map>
#include <string>
#include <vector>

#include "base/clock.h"
#include "platform/linux/bluez_objects.h"

namespace tandrel::bluez {

// Recognises a pairing that only one side still has. The daemon refuses it below everything that it
// reports: the device comes and goes within a moment, again and again.
class BondWatch {
 public:
    // Called with every change; devices that a person should hear of, each once.
    std::vector<Device> newlyStale(const Objects& objects, TimePoint now);

    // What to tell the person.
    static std::string advice(const Device& device);

 private:
    struct Visit {
        TimePoint since{};
        bool connected = false;
        bool settled = false;  // its services became known during this visit
        int failures = 0;
    };
    std::map<std::string, Visit> visits_;  // by address, of paired devices
};

}  // namespace tandrel::bluez
