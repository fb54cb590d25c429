#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "base/clock.h"
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

    // Waits, reading the display's state anew each time, until `fits`; false after ten seconds.
    bool await(const std::function<bool()>& fits) const;

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
    void fill(std::uint32_t colour, Place area = {0, 0, 4000, 4000});
    void move(std::int16_t x, std::int16_t y);
    void resize(std::uint16_t width, std::uint16_t height);
    void raise();
    // These two ask the window manager, which takes its time.
    void minimise();
    void moveToDesktop(std::uint32_t number);
    void restore();
    void close();
    void setClass(const std::string& instance, const std::string& name);

 private:
    void flush() { desktop_.x().sync(); }
    void ask(const char* what, std::uint32_t value);

    const XDesktop& desktop_;
    const std::uint32_t id_;
    const std::uint32_t pen_;
};

}  // namespace tandrel
