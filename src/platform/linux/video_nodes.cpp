#include "platform/linux/video_nodes.h"

#include <algorithm>
#include <optional>

#include <poll.h>

#include "platform/linux/udev_owned.h"

namespace tandrel {
namespace {

constexpr const char* kSubsystem = "video4linux";

std::string textOf(const char* text) { return text == nullptr ? "" : text; }

std::optional<VideoNode> videoNodeOf(udev_device* device) {
    const char* path = udev_device_get_devnode(device);
    if (path == nullptr) return std::nullopt;  // it is about to go
    return VideoNode{path, textOf(udev_device_get_property_value(device, "ID_PATH")),
                     textOf(udev_device_get_sysattr_value(device, "name"))};
}

class UdevVideoNodes final : public VideoNodes {
 public:
    UdevVideoNodes() : context_(udev_new()) {
        if (!context_) return;
        monitor_.reset(udev_monitor_new_from_netlink(context_.get(), "udev"));
        if (!monitor_) return;
        udev_monitor_filter_add_match_subsystem_devtype(monitor_.get(), kSubsystem, nullptr);
        udev_monitor_enable_receiving(monitor_.get());
    }

    // With a context of its own, since one is for one thread.
    std::vector<VideoNode> list() override {
        std::vector<VideoNode> nodes;
        const UdevOwned<udev> context(udev_new());
        if (!context) return nodes;
        const UdevOwned<udev_enumerate> found(udev_enumerate_new(context.get()));
        if (!found || udev_enumerate_add_match_subsystem(found.get(), kSubsystem) < 0 ||
            udev_enumerate_scan_devices(found.get()) < 0) {
            return nodes;
        }
        udev_list_entry* entry = nullptr;
        udev_list_entry_foreach(entry, udev_enumerate_get_list_entry(found.get())) {
            const UdevOwned<udev_device> device(
                udev_device_new_from_syspath(context.get(), udev_list_entry_get_name(entry)));
            if (!device) continue;  // unplugged since the scan
            if (auto node = videoNodeOf(device.get())) nodes.push_back(std::move(*node));
        }
        std::ranges::sort(nodes, {}, &VideoNode::path);
        return nodes;
    }

    void awaitChange(int wake, Duration longest) override {
        const auto left = std::chrono::duration_cast<std::chrono::milliseconds>(longest);
        pollfd waits[] = {{wake, POLLIN, 0},
                          {monitor_ ? udev_monitor_get_fd(monitor_.get()) : -1, POLLIN, 0}};
        if (::poll(waits, 2, static_cast<int>(left.count())) <= 0) return;
        if (waits[1].revents == 0) return;
        // Several come together: a grabber has a node for its metadata, too.
        for (int i = 0; i < kMostAtOnce; ++i) {
            if (!UdevOwned<udev_device>(udev_monitor_receive_device(monitor_.get()))) return;
        }
    }

 private:
    static constexpr int kMostAtOnce = 64;

    const UdevOwned<udev> context_;
    UdevOwned<udev_monitor> monitor_;
};

}  // namespace

std::unique_ptr<VideoNodes> makeUdevVideoNodes() { return std::make_unique<UdevVideoNodes>(); }

}  // namespace tandrel
