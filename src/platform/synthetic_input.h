#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "base/clock.h"
#include "base/result.h"

// This computer's own pointer and keyboard, driven as if by hand.
namespace tandrel {

// A place on the desktop, in points.
struct DesktopPoint {
    double x = 0;
    double y = 0;
};

class SyntheticInput {
 public:
    virtual ~SyntheticInput() = default;
    // Each blocks until it has happened. The error says what is missing or not known. Once a window
    // was activated, `click` and `drag` begin on it or fail.
    virtual Result<void> click(DesktopPoint at) = 0;
    virtual Result<void> drag(DesktopPoint from, DesktopPoint to, Duration duration) = 0;
    // Types into whatever has the keyboard.
    virtual Result<void> type(std::string_view text) = 0;
    // `key` is a character or a name such as "return"; modifiers are "cmd", "shift", "alt", "ctrl".
    virtual Result<void> key(std::string_view key, const std::vector<std::string>& modifiers) = 0;
    // Brings the window to the front and gives it the keyboard.
    virtual Result<void> activate(std::uint32_t window) = 0;
};

}  // namespace tandrel
