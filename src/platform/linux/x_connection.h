#pragma once

#include <cstdint>
#include <cstdlib>
#include <memory>
#include <string>
#include <vector>

#include <xcb/xcb.h>

#include "base/result.h"

namespace tandrel {

// Frees what xcb allocates.
template <typename Reply>
using XReply = std::unique_ptr<Reply, decltype(&std::free)>;
template <typename Reply>
XReply<Reply> xReply(Reply* reply) {
    return {reply, &std::free};
}

// One connection to the X server that DISPLAY names. Any thread may send requests.
class XConnection {
 public:
    // The error says why there is no display to look at, and what to do.
    static Result<std::unique_ptr<XConnection>> open();
    ~XConnection() { xcb_disconnect(connection_); }
    XConnection(const XConnection&) = delete;
    XConnection& operator=(const XConnection&) = delete;

    xcb_connection_t* get() const { return connection_; }
    xcb_window_t root() const { return screen_->root; }
    int descriptor() const { return xcb_get_file_descriptor(connection_); }
    bool isBroken() const { return xcb_connection_has_error(connection_) != 0; }
    // Whether the server has the extension.
    bool has(xcb_extension_t& extension) const;

    // 0 (none) for a name that no client ever used.
    xcb_atom_t atom(const char* name) const;
    // Of a property that holds text; empty without it.
    std::string text(xcb_window_t window, xcb_atom_t property) const;
    // Of a property that holds 32-bit numbers; empty without it.
    std::vector<std::uint32_t> numbers(xcb_window_t window, xcb_atom_t property) const;
    // Waits until the server has done everything sent before.
    void sync() const;

 private:
    XConnection(xcb_connection_t* connection, xcb_screen_t* screen)
        : connection_(connection), screen_(screen) {}

    xcb_connection_t* const connection_;
    xcb_screen_t* const screen_;
};

// What to do where windows are not X windows.
Error noWindowsOnWayland();
bool isWaylandDesktop();

}  // namespace tandrel
