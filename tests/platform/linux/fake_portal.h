#pragma once

#include <functional>
#include <string>

#include "platform/linux/bus_service.h"

namespace tandrel {

// The desktop portal as far as the colours of windows go; `answer` is what it says about them.
class FakePortal {
 public:
    FakePortal(const std::string& address, std::function<sdbus::Variant()> answer)
        : service_(address, "/org/freedesktop/portal/desktop") {
        addMethod(service_.object(), "org.freedesktop.portal.Settings", "Read",
                  [answer = std::move(answer)](const std::string& space, const std::string& key) {
                      if (space == "org.freedesktop.appearance" && key == "color-scheme")
                          return answer();
                      throw sdbus::Error("org.freedesktop.portal.Error.NotFound", space + key);
                  });
        service_.appear("org.freedesktop.portal.Desktop");
    }

    // A number as the portal's method wraps it.
    static sdbus::Variant wrapped(std::uint32_t number) {
        return sdbus::Variant(sdbus::Variant(number));
    }

 private:
    BusService service_;
};

}  // namespace tandrel
