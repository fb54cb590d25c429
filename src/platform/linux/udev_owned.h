#pragma once

#include <memory>

#include <libudev.h>

namespace tandrel {

struct UdevUnref {
    void operator()(udev* context) const { udev_unref(context); }
    void operator()(udev_enumerate* list) const { udev_enumerate_unref(list); }
    void operator()(udev_device* device) const { udev_device_unref(device); }
    void operator()(udev_monitor* monitor) const { udev_monitor_unref(monitor); }
};
// One of libudev's counted objects.
template <typename T>
using UdevOwned = std::unique_ptr<T, UdevUnref>;

}  // namespace tandrel
