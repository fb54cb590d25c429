#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "support/child_program.h"

struct xcb_connection_t;

namespace tandrel {

// A display of its own without a monitor (Xvfb), and a mouse and a keyboard on it (XTEST).
class XDisplay {
 public:
    // Nothing where Xvfb is not installed.
    static std::unique_ptr<XDisplay> open(const std::string& size = "1280x1000");
    // One that runs already.
    static std::unique_ptr<XDisplay> attach(const std::string& name);
    ~XDisplay();

    const std::string& name() const { return name_; }

    struct Window {
        std::uint32_t id = 0;
        int x = 0;  // of its content, on the display
        int y = 0;
        int width = 0;
        int height = 0;
    };
    // The visible window of this title.
    std::optional<Window> find(const std::string& title);
    // The whole display with all that is on it.
    Window everything() const;
    void focus(const Window& window);
    // What a window has told the window manager: the names in _NET_WM_STATE, and a number.
    std::vector<std::string> states(const Window& window);
    std::optional<std::uint32_t> number(const Window& window, const std::string& property);
    // What it shows, row by row as 0xRRGGBB; empty when it is gone.
    std::vector<std::uint32_t> pixels(const Window& window);
    // As the window manager does when its button is clicked.
    void close(const Window& window);
    // Whether a menu or the like is open: a window that no manager manages.
    bool hasPopup();
    void click(int x, int y);
    // X keycodes.
    enum class Key : std::uint8_t { escape = 9, tab = 23, enter = 36, space = 65, down = 116 };
    void press(Key key);

 private:
    XDisplay(std::unique_ptr<ChildProgram> server, std::string name);
    std::optional<Window> findBelow(std::uint32_t parent, const std::string& title);
    std::string titleOf(std::uint32_t window);
    std::uint32_t atom(const std::string& name);
    std::vector<std::uint32_t> property(std::uint32_t window, const std::string& name);
    void fake(std::uint8_t type, std::uint8_t detail, int x = 0, int y = 0);

    const std::unique_ptr<ChildProgram> server_;
    const std::string name_;
    xcb_connection_t* const connection_;
    std::uint32_t root_ = 0;
};

}  // namespace tandrel
