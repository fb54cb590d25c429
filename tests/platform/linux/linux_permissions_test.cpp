#include "platform/linux/linux_permissions.h"

#include <gtest/gtest.h>

#include "platform/linux/as_nobody.h"
#include "platform/linux/bus_service.h"
#include "platform/linux/private_bus.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

TEST(LinuxPermissions, BluetoothIsDeniedWhereTheBusRefusesAndGrantedElsewhere) {
    const std::pair<const char*, Permission> rows[] = {
        {"<deny send_destination='org.bluez'/>", Permission::denied}, {"", Permission::granted}};
    for (const auto& [policy, permission] : rows) {
        const PrivateBus bus(policy);
        EXPECT_EQ(LinuxPermissions().bluetooth(), Permission::granted)
            << "nothing is known while BlueZ does not run";
        BusService bluez(bus.address(), "/");
        bluez.appear("org.bluez");
        EXPECT_EQ(LinuxPermissions().bluetooth(), permission) << policy;
    }
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
    EXPECT_EQ(LinuxPermissions("/nonexistent").camera(), Permission::granted);
    EXPECT_EQ(permissions.camera(), Permission::granted) << "no device, nobody refuses";
    add("null", 0600);
    EXPECT_EQ(permissions.camera(), Permission::granted) << "not a video device";
    add("video0", 0000);
    add("video1", 0000);
    EXPECT_EQ(permissions.camera(), Permission::denied);
    add("video2", 0666);
    EXPECT_EQ(permissions.camera(), Permission::granted);
}

}  // namespace
}  // namespace tandrel
