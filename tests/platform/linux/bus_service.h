#pragma once

#include <memory>
#include <string>

#include <sdbus-c++/sdbus-c++.h>

namespace tandrel {

template <typename Function>
void addMethod(sdbus::IObject& object, const char* interface, const char* name, Function function) {
    object.registerMethod(name).onInterface(interface).implementedAs(std::move(function));
}

// A service of a test's own on a bus, with one object.
class BusService {
 public:
    BusService(const std::string& address, const char* path)
        : bus_(sdbus::createSessionBusConnectionWithAddress(address)),
          object_(sdbus::createObject(*bus_, path)) {}
    ~BusService() { bus_->leaveEventLoop(); }
    BusService(const BusService&) = delete;
    BusService& operator=(const BusService&) = delete;

    sdbus::IObject& object() { return *object_; }
    // From now on it answers.
    void appear(const char* name) {
        object_->finishRegistration();
        bus_->requestName(name);
        bus_->enterEventLoopAsync();
    }

 private:
    const std::unique_ptr<sdbus::IConnection> bus_;
    const std::unique_ptr<sdbus::IObject> object_;
};

}  // namespace tandrel
