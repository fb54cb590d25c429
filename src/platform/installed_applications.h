#pragma once

#include <filesystem>
#include <optional>
#include <string_view>

#include "base/result.h"

// The applications with windows that are installed for this user.
namespace tandrel {

struct InstalledApplication {
    std::filesystem::path location;  // what the system starts it by
};

class InstalledApplications {
 public:
    virtual ~InstalledApplications() = default;
    // By reverse-DNS identifier; nothing when the system does not know such an application.
    virtual std::optional<InstalledApplication> find(std::string_view bundleIdentifier) = 0;
    // Starts it. The error says why that was not possible.
    virtual Result<void> open(const InstalledApplication& application) = 0;
};

}  // namespace tandrel
