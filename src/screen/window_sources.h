#pragma once

#include <vector>

#include "platform/windows.h"

namespace tandrel {

// Several sources of windows as one, those of the first source first. A source that fails is left
// out; its error counts when the others have no window either.
class WindowSources final : public Windows {
 public:
    // All outlive the object; there is at least one.
    explicit WindowSources(std::vector<Windows*> sources) : sources_(std::move(sources)) {}

    Result<std::vector<WinInfo>> all() override;
    Result<std::unique_ptr<WindowStream>> open(std::uint32_t id, WindowEvents events) override;

 private:
    const std::vector<Windows*> sources_;
};

}  // namespace tandrel
