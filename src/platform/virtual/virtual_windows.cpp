#include "platform/virtual/virtual_windows.h"

#include <utility>

#include <unistd.h>

namespace tandrel {
namespace {

// Window numbers begin here, so that they are not taken for the phones' places in the list.
constexpr std::uint32_t kFirstId = 1001;

// Both callbacks run on the phone's thread, one at a time.
class VirtualWindowStream final : public WindowStream {
 public:
    VirtualWindowStream(VirtualPhone& phone, std::uint32_t id, WindowEvents events)
        : events_(std::move(events)) {
        links_ = phone.watchLinks([this, id](PhoneLinks links) {
            if (links.mirroring || std::exchange(ended_, true)) return;
            events_.ended(windowIsGone(id).message);
        });
        frames_ = phone.watchFrames(VirtualPhone::View::mirror, [this](PixelBuffer frame) {
            if (!ended_) events_.frame(std::move(frame));
        });
    }

 private:
    const WindowEvents events_;
    bool ended_ = false;
    PhoneSubscriptionPtr links_;
    PhoneSubscriptionPtr frames_;
};

WinInfo windowOf(VirtualPhone& phone, std::uint32_t id) {
    const PhoneTraits& traits = phone.traits();
    constexpr double kGap = 40;  // points between windows
    const double width = traits.width / traits.scale;
    const double left = kGap + (id - kFirstId) * (width + kGap);
    return {.id = id,
            .owner = "iPhone Mirroring",
            .bundle = "com.apple.AirPlayUIAgent",
            .pid = ::getpid(),
            .title = traits.name,
            .frame = {left, kGap, width, traits.height / traits.scale},
            .onScreen = true,
            .isBare = true};
}

}  // namespace

Result<std::vector<WinInfo>> VirtualWindows::all() {
    std::vector<WinInfo> windows;
    std::uint32_t id = kFirstId;
    for (VirtualPhone* phone : phones_) {
        if (phone->links().mirroring) windows.push_back(windowOf(*phone, id));
        ++id;
    }
    return windows;
}

Result<std::unique_ptr<WindowStream>> VirtualWindows::open(std::uint32_t id, WindowEvents events) {
    const std::size_t index = id - kFirstId;
    if (id < kFirstId || index >= phones_.size() || !phones_[index]->links().mirroring) {
        return std::unexpected(windowIsGone(id));
    }
    return std::make_unique<VirtualWindowStream>(*phones_[index], id, std::move(events));
}

}  // namespace tandrel
