#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "platform/linux/x_connection.h"
#include "support/child_program.h"
#include "support/environment_variable.h"

namespace tandrel {

// A display of its own without a monitor (Xvfb), which DISPLAY names while it lives.
class XDesktop {
 public:
    enum class Manager { none, openbox };
    // Nothing where the programs are not installed.
    static std::unique_ptr<XDesktop> open(Manager manager, const std::string& size = "1600x1200");

    const XConnection& x() const { return *x_; }
    const std::string& name() const { return name_; }
    // The server ends as if it had crashed.
    void kill() { server_->signal(9); }

 private:
    XDesktop(std::unique_ptr<ChildProgram> server, std::string name);

    const std::unique_ptr<ChildProgram> server_;
    const std::string name_;
    const EnvironmentVariable display_;
    std::unique_ptr<XConnection> x_;
    std::unique_ptr<ChildProgram> manager_;
};

// A window that a test draws, with nothing but a title: neither class nor process is written on it.
class XTestWindow {
 public:
    struct Place {
        std::int16_t x = 40;
        std::int16_t y = 60;
        std::uint16_t width = 300;
        std::uint16_t height = 650;
    };
    XTestWindow(const XDesktop& desktop, const std::string& title, Place place);

    std::uint32_t id() const { return id_; }
    bool isShown() const;
    void fill(std::uint32_t colour, Place area = {0, 0, 4000, 4000});
    void move(int x, int y) { configure(XCB_CONFIG_WINDOW_X | XCB_CONFIG_WINDOW_Y, {x, y}); }
    void resize(int width, int height) {
        configure(XCB_CONFIG_WINDOW_WIDTH | XCB_CONFIG_WINDOW_HEIGHT, {width, height});
    }
    void raise() { configure(XCB_CONFIG_WINDOW_STACK_MODE, {XCB_STACK_MODE_ABOVE}); }
    // These two ask the window manager, which takes its time.
    void minimise() { ask("WM_CHANGE_STATE", 3); }  // IconicState, ICCCM 4.1.4
    void moveToDesktop(std::uint32_t number) { ask("_NET_WM_DESKTOP", number); }
    void restore();
    void close();
    void setText(xcb_atom_t property, const std::string& text);

 private:
    void configure(std::uint16_t what, std::vector<int> values);
    void ask(const char* what, std::uint32_t value);

    const XDesktop& desktop_;
    const std::uint32_t id_;
    const std::uint32_t pen_;
};

}  // namespace tandrel
