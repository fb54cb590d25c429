#pragma once

#include <memory>
#include <string>
#include <vector>

#include <sdbus-c++/sdbus-c++.h>

namespace tandrel::bluez {

// What a phone sees of us before it connects, as the object that
// LEAdvertisingManager1.RegisterAdvertisement takes: a connectable, discoverable keyboard.
class Advertisement {
 public:
    // The connection outlives this object.
    Advertisement(sdbus::IConnection& bus, std::string path, const std::string& localName,
                  const std::vector<std::string>& serviceUuids);

    const std::string& path() const { return path_; }

 private:
    const std::string path_;
    const std::unique_ptr<sdbus::IObject> object_;
};

// The name cut at a character to the 29 bytes that fit into a scan response.
std::string advertisedName(const std::string& localName);

}  // namespace tandrel::bluez
