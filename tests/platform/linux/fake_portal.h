#pragma once

#include <functional>
#include <string>

#include <sdbus-c++/sdbus-c++.h>

namespace tandrel {

// The desktop portal as far as the colours of windows go; `answer` is what it says about them.
class FakePortal {
 public:
    FakePortal(const std::string& address, std::function<sdbus::Variant()> answer)
        : bus_(sdbus::createSessionBusConnectionWithAddress(address)),
          object_(sdbus::createObject(*bus_, "/org/freedesktop/portal/desktop")) {
        object_->registerMethod("Read")
            .onInterface("org.freedesktop.portal.Settings")
            .implementedAs(
                [answer = std::move(answer)](const std::string& space, const std::string& key) {
                    if (space == "org.freedesktop.appearance" && key == "color-scheme")
                        return answer();
                    throw sdbus::Error("org.freedesktop.portal.Error.NotFound", space + key);
                });
        object_->finishRegistration();
        bus_->requestName("org.freedesktop.portal.Desktop");
        bus_->enterEventLoopAsync();
    }
    ~FakePortal() { bus_->leaveEventLoop(); }
    FakePortal(const FakePortal&) = delete;
    FakePortal& operator=(const FakePortal&) = delete;

    // A number as the portal's method wraps it.
    static sdbus::Variant wrapped(std::uint32_t number) {
        return sdbus::Variant(sdbus::Variant(number));
    }

 private:
    std::unique_ptr<sdbus::IConnection> bus_;
    std::unique_ptr<sdbus::IObject> object_;
};

}  // namespace tandrel
