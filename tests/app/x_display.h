#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>

#include "support/child_program.h"

struct xcb_connection_t;

namespace tandrel {

// A display of its own without a monitor (Xvfb), and a mouse and a keyboard on it (XTEST).
class XDisplay {
 public:
    // Nothing where Xvfb is not installed.
    static std::unique_ptr<XDisplay> open();
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
    void focus(const Window& window);
    void click(int x, int y);
    enum class Key : std::uint8_t { escape = 9, tab = 23, enter = 36, space = 65 };  // X keycodes
    void press(Key key);

 private:
    XDisplay(std::unique_ptr<ChildProgram> server, std::string name);
    std::optional<Window> findBelow(std::uint32_t parent, const std::string& title);
    std::string titleOf(std::uint32_t window);
    void fake(std::uint8_t type, std::uint8_t detail, int x = 0, int y = 0);

    const std::unique_ptr<ChildProgram> server_;
    const std::string name_;
    xcb_connection_t* const connection_;
    std::uint32_t root_ = 0;
};

}  // namespace tandrel
