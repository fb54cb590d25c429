#include "app/x_display.h"

#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <stdexcept>

#include <xcb/xcb.h>
#include <xcb/xtest.h>

namespace tandrel {
namespace {

constexpr const char* kServer = "/usr/bin/Xvfb";

// Frees what xcb allocates.
template <typename Reply>
using Owned = std::unique_ptr<Reply, decltype(&std::free)>;
template <typename Reply>
Owned<Reply> owned(Reply* reply) {
    return {reply, &std::free};
}

}  // namespace

std::unique_ptr<XDisplay> XDisplay::open() {
    if (!std::filesystem::exists(kServer)) return nullptr;
    // It complains aloud about numbers that are taken; only the number it found counts.
    const std::string command = std::string("exec ") + kServer +
                                " -displayfd 1 -screen 0 1280x1000x24 -nolisten tcp 2>/dev/null";
    auto server =
        std::make_unique<ChildProgram>(std::vector<std::string>{"/bin/sh", "-c", command},
                                       ChildProgram::Environment{{"PATH", "/usr/bin:/bin"}});
    if (!server->awaitOutput("\n")) return nullptr;
    const std::string& output = server->output();
    std::string name = ":" + output.substr(0, output.find('\n'));
    return std::unique_ptr<XDisplay>(new XDisplay(std::move(server), std::move(name)));
}

XDisplay::XDisplay(std::unique_ptr<ChildProgram> server, std::string name)
    : server_(std::move(server)),
      name_(std::move(name)),
      connection_(xcb_connect(name_.c_str(), nullptr)) {
    if (xcb_connection_has_error(connection_) != 0) throw std::runtime_error("no X on " + name_);
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

XDisplay::~XDisplay() { xcb_disconnect(connection_); }

std::string XDisplay::titleOf(std::uint32_t window) {
    const auto reply =
        owned(xcb_get_property_reply(connection_,
                                     xcb_get_property(connection_, 0, window, XCB_ATOM_WM_NAME,
                                                      XCB_GET_PROPERTY_TYPE_ANY, 0, 64),
                                     nullptr));
    if (!reply) return {};
    return {static_cast<const char*>(xcb_get_property_value(reply.get())),
            static_cast<std::size_t>(xcb_get_property_value_length(reply.get()))};
}

std::optional<XDisplay::Window> XDisplay::find(const std::string& title) {
    return findBelow(root_, title);
}

std::optional<XDisplay::Window> XDisplay::findBelow(std::uint32_t parent,
                                                    const std::string& title) {
    const auto tree =
        owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, parent), nullptr));
    if (!tree) return std::nullopt;
    const std::uint32_t* children = xcb_query_tree_children(tree.get());
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        const std::uint32_t id = children[i];
        const auto state = owned(xcb_get_window_attributes_reply(
            connection_, xcb_get_window_attributes(connection_, id), nullptr));
        if (!state || state->map_state != XCB_MAP_STATE_VIEWABLE) continue;
        if (titleOf(id) != title) {
            if (auto found = findBelow(id, title)) return found;
            continue;
        }
        const auto size =
            owned(xcb_get_geometry_reply(connection_, xcb_get_geometry(connection_, id), nullptr));
        const auto place = owned(xcb_translate_coordinates_reply(
            connection_, xcb_translate_coordinates(connection_, id, root_, 0, 0), nullptr));
        if (!size || !place) continue;
        return Window{id, place->dst_x, place->dst_y, size->width, size->height};
    }
    return std::nullopt;
}

void XDisplay::focus(const Window& window) {
    xcb_set_input_focus(connection_, XCB_INPUT_FOCUS_PARENT, window.id, XCB_CURRENT_TIME);
    xcb_flush(connection_);
}

void XDisplay::fake(std::uint8_t type, std::uint8_t detail, int x, int y) {
    xcb_test_fake_input(connection_, type, detail, XCB_CURRENT_TIME, root_,
                        static_cast<std::int16_t>(x), static_cast<std::int16_t>(y), 0);
}

void XDisplay::click(int x, int y) {
    fake(XCB_MOTION_NOTIFY, 0, x, y);
    fake(XCB_BUTTON_PRESS, 1);
    fake(XCB_BUTTON_RELEASE, 1);
    xcb_flush(connection_);
}

void XDisplay::press(Key key) {
    fake(XCB_KEY_PRESS, static_cast<std::uint8_t>(key));
    fake(XCB_KEY_RELEASE, static_cast<std::uint8_t>(key));
    xcb_flush(connection_);
}

}  // namespace tandrel
