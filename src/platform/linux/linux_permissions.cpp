#include "platform/linux/linux_permissions.h"

#include <cerrno>
#include <chrono>
#include <system_error>

#include <fcntl.h>

#include "base/file_descriptor.h"
#include "platform/linux/system_bus.h"

namespace tandrel {
namespace {

constexpr const char* kBluez = "org.bluez";
constexpr std::chrono::milliseconds kLongestQuestion{500};

// Opening is the question itself; a busy device is one that may be used.
bool isRefused(const std::filesystem::path& device) {
    const FileDescriptor file(::open(device.c_str(), O_RDWR | O_CLOEXEC | O_NONBLOCK));
    return !file && (errno == EACCES || errno == EPERM);
}

}  // namespace

LinuxPermissions::LinuxPermissions(std::filesystem::path deviceFolder)
    : deviceFolder_(std::move(deviceFolder)) {}

Permission LinuxPermissions::bluetooth() {
    const auto bus = openSystemBus();
    if (!bus) return Permission::granted;
    try {
        const auto daemon = sdbus::createProxy(**bus, "org.freedesktop.DBus", "/");
        bool isThere = false;  // asked first, since a message to BlueZ would start it
        daemon->callMethod("NameHasOwner")
            .onInterface("org.freedesktop.DBus")
            .withTimeout(kLongestQuestion)
            .withArguments(std::string(kBluez))
            .storeResultsTo(isThere);
        if (!isThere) return Permission::granted;
        const auto bluez = sdbus::createProxy(**bus, kBluez, "/");
        bluez->callMethod("Ping")
            .onInterface("org.freedesktop.DBus.Peer")
            .withTimeout(kLongestQuestion);
    } catch (const sdbus::Error& error) {
        if (error.getName() == "org.freedesktop.DBus.Error.AccessDenied") return Permission::denied;
    }
    return Permission::granted;
}

Permission LinuxPermissions::camera() {
    bool someRefused = false;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(deviceFolder_, error), end;
         !error && entry != end; entry.increment(error)) {
        if (!entry->path().filename().string().starts_with("video")) continue;
        if (!isRefused(entry->path())) return Permission::granted;
        someRefused = true;
    }
    return someRefused ? Permission::denied : Permission::granted;
}

}  // namespace tandrel
