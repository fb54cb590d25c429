#pragma once

#include <filesystem>

#include "platform/permissions.h"

namespace tandrel {

// On Linux nobody is asked: a program may what its user may. So everything counts as granted unless
// the system is known to refuse it:
//   camera           there are video devices and none may be opened (group "video")
//   Bluetooth        the system bus's policy refuses messages to org.bluez
//   screen recording never refused under X11; a Wayland portal asks at the time of use
class LinuxPermissions final : public Permissions {
 public:
    // The video devices lie in this folder.
    explicit LinuxPermissions(std::filesystem::path deviceFolder = "/dev");

    Permission bluetooth() override;
    Permission camera() override;
    Permission screenRecording() override { return Permission::granted; }

 private:
    const std::filesystem::path deviceFolder_;
};

}  // namespace tandrel
