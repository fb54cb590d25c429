#pragma once

#include <optional>
#include <string>

#include "platform/linux/x_connection.h"

namespace tandrel {

// The windows of other programs on a display, and a mouse and a keyboard on it (XTEST).
class XDisplay {
 public:
    // `x` outlives it.
    explicit XDisplay(const XConnection& x) : x_(x) {}

    struct Window {
        std::uint32_t id = 0;
        int x = 0;  // of its content, on the display
        int y = 0;
        int width = 0;
        int height = 0;
    };
    // The visible window of this title.
    std::optional<Window> find(const std::string& title) const;
    void focus(const Window& window) const;
    // As the window manager does when its button is clicked.
    void close(const Window& window) const;
    // Whether a menu or the like is open: a window that no manager manages.
    bool hasPopup() const;
    void click(int x, int y) const;
    // X keycodes.
    enum class Key : std::uint8_t { escape = 9, tab = 23, enter = 36, space = 65, down = 116 };
    void press(Key key) const;

 private:
    void fake(std::uint8_t type, std::uint8_t detail, int x = 0, int y = 0) const;

    const XConnection& x_;
};

}  // namespace tandrel
