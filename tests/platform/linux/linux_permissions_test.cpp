#include "platform/linux/linux_permissions.h"

#include <gtest/gtest.h>
#include <sdbus-c++/sdbus-c++.h>

#include "platform/linux/as_nobody.h"
#include "platform/linux/private_bus.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

// Answers pings as any D-Bus service does.
class Bluez {
 public:
    explicit Bluez(const std::string& address)
        : bus_(sdbus::createSessionBusConnectionWithAddress(address)) {
        bus_->requestName("org.bluez");
        bus_->enterEventLoopAsync();
    }
    ~Bluez() { bus_->leaveEventLoop(); }
    Bluez(const Bluez&) = delete;
    Bluez& operator=(const Bluez&) = delete;

 private:
    std::unique_ptr<sdbus::IConnection> bus_;
};

TEST(LinuxPermissions, BluetoothIsDeniedWhereTheBusRefuses) {
    const PrivateBus bus("<deny send_destination='org.bluez'/>");
    EXPECT_EQ(LinuxPermissions().bluetooth(), Permission::granted)
        << "nothing is known while BlueZ does not run";
    const Bluez bluez(bus.address());
    EXPECT_EQ(LinuxPermissions().bluetooth(), Permission::denied);
}

TEST(LinuxPermissions, BluetoothIsGrantedWhereBluezAnswersOrThereIsNoBus) {
    const PrivateBus bus;
    const Bluez bluez(bus.address());
    EXPECT_EQ(LinuxPermissions().bluetooth(), Permission::granted);
    const EnvironmentVariable nowhere("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=/nonexistent/bus");
    EXPECT_EQ(LinuxPermissions().bluetooth(), Permission::granted);
}

TEST(LinuxPermissions, CameraIsDeniedWhenEveryVideoDeviceIsClosedToTheUser) {
    const TemporaryFolder devices;
    std::filesystem::permissions(devices.path(), std::filesystem::perms(0777));
    const auto add = [&](const char* name, int mode) {
        std::ofstream(devices.path() / name).flush();
        std::filesystem::permissions(devices.path() / name, std::filesystem::perms(mode));
    };
    LinuxPermissions permissions(devices.path());
    const AsNobody nobody;
    EXPECT_EQ(permissions.camera(), Permission::granted) << "no device, nobody refuses";
    add("null", 0600);
    EXPECT_EQ(permissions.camera(), Permission::granted) << "not a video device";
    add("video0", 0000);
    add("video1", 0000);
    EXPECT_EQ(permissions.camera(), Permission::denied);
    add("video2", 0666);
    EXPECT_EQ(permissions.camera(), Permission::granted);
}

TEST(LinuxPermissions, CameraIsGrantedWithoutADeviceFolder) {
    EXPECT_EQ(LinuxPermissions("/nonexistent").camera(), Permission::granted);
}

}  // namespace
}  // namespace tandrel
