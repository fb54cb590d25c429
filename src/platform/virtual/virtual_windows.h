#pragma once

#include <vector>

#include "platform/virtual/virtual_phone.h"
#include "platform/windows.h"

namespace tandrel {

// Each virtual phone's mirroring window, there while the phone mirrors its screen. The phones
// outlive this and every stream.
class VirtualWindows final : public Windows {
 public:
    explicit VirtualWindows(std::vector<VirtualPhone*> phones) : phones_(std::move(phones)) {}

    Result<std::vector<WinInfo>> all() override;
    Result<std::unique_ptr<WindowStream>> open(std::uint32_t id, WindowEvents events) override;

 private:
    const std::vector<VirtualPhone*> phones_;
};

}  // namespace tandrel
