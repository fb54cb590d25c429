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

std::unique_ptr<XDisplay> XDisplay::open(const std::string& size) {
    if (!std::filesystem::exists(kServer)) return nullptr;
    // It complains aloud about numbers that are taken; only the number it found counts.
    const std::string command = std::string("exec ") + kServer + " -displayfd 1 -screen 0 " + size +
                                "x24 -nolisten tcp 2>/dev/null";
    auto server =
        std::make_unique<ChildProgram>(std::vector<std::string>{"/bin/sh", "-c", command},
                                       ChildProgram::Environment{{"PATH", "/usr/bin:/bin"}});
    if (!server->awaitOutput("\n")) return nullptr;
    const std::string& output = server->output();
    std::string name = ":" + output.substr(0, output.find('\n'));
    return std::unique_ptr<XDisplay>(new XDisplay(std::move(server), std::move(name)));
}

std::unique_ptr<XDisplay> XDisplay::attach(const std::string& name) {
    return std::unique_ptr<XDisplay>(new XDisplay(nullptr, name));
}

XDisplay::XDisplay(std::unique_ptr<ChildProgram> server, std::string name)
    : server_(std::move(server)),
      name_(std::move(name)),
      connection_(xcb_connect(name_.c_str(), nullptr)) {
    if (xcb_connection_has_error(connection_) != 0) throw std::runtime_error("no X on " + name_);
    root_ = xcb_setup_roots_iterator(xcb_get_setup(connection_)).data->root;
}

XDisplay::~XDisplay() { xcb_disconnect(connection_); }

XDisplay::Window XDisplay::everything() const {
    const xcb_screen_t& screen = *xcb_setup_roots_iterator(xcb_get_setup(connection_)).data;
    return {.id = root_, .width = screen.width_in_pixels, .height = screen.height_in_pixels};
}

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

std::uint32_t XDisplay::atom(const std::string& name) {
    const auto cookie =
        xcb_intern_atom(connection_, 0, static_cast<std::uint16_t>(name.size()), name.c_str());
    const auto reply = owned(xcb_intern_atom_reply(connection_, cookie, nullptr));
    return reply ? reply->atom : 0;
}

std::vector<std::uint32_t> XDisplay::property(std::uint32_t window, const std::string& name) {
    const auto cookie =
        xcb_get_property(connection_, 0, window, atom(name), XCB_GET_PROPERTY_TYPE_ANY, 0, 64);
    const auto reply = owned(xcb_get_property_reply(connection_, cookie, nullptr));
    if (!reply || reply->format != 32) return {};
    const auto* values = static_cast<std::uint32_t*>(xcb_get_property_value(reply.get()));
    return {values, values + reply->value_len};
}

std::vector<std::string> XDisplay::states(const Window& window) {
    std::vector<std::string> names;
    for (const std::uint32_t state : property(window.id, "_NET_WM_STATE")) {
        const auto reply = owned(
            xcb_get_atom_name_reply(connection_, xcb_get_atom_name(connection_, state), nullptr));
        if (!reply) continue;
        names.emplace_back(xcb_get_atom_name_name(reply.get()),
                           static_cast<std::size_t>(xcb_get_atom_name_name_length(reply.get())));
    }
    return names;
}

std::optional<std::uint32_t> XDisplay::number(const Window& window, const std::string& name) {
    const auto values = property(window.id, name);
    if (values.empty()) return std::nullopt;
    return values.front();
}

std::vector<std::uint32_t> XDisplay::pixels(const Window& window) {
    const auto cookie = xcb_get_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window.id, 0, 0,
                                      static_cast<std::uint16_t>(window.width),
                                      static_cast<std::uint16_t>(window.height), 0xffffffff);
    const auto reply = owned(xcb_get_image_reply(connection_, cookie, nullptr));
    if (!reply) return {};
    const auto* bytes = xcb_get_image_data(reply.get());
    std::vector<std::uint32_t> pixels(static_cast<std::size_t>(window.width * window.height));
    std::memcpy(pixels.data(), bytes, pixels.size() * sizeof(pixels[0]));
    for (std::uint32_t& pixel : pixels) pixel &= 0xffffff;
    return pixels;
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

void XDisplay::close(const Window& window) {
    xcb_client_message_event_t event{};
    event.response_type = XCB_CLIENT_MESSAGE;
    event.format = 32;
    event.window = window.id;
    event.type = atom("WM_PROTOCOLS");
    event.data.data32[0] = atom("WM_DELETE_WINDOW");
    xcb_send_event(connection_, 0, window.id, XCB_EVENT_MASK_NO_EVENT,
                   reinterpret_cast<const char*>(&event));
    xcb_flush(connection_);
}

bool XDisplay::hasPopup() {
    const auto tree =
        owned(xcb_query_tree_reply(connection_, xcb_query_tree(connection_, root_), nullptr));
    if (!tree) return false;
    for (int i = 0; i < xcb_query_tree_children_length(tree.get()); ++i) {
        const std::uint32_t id = xcb_query_tree_children(tree.get())[i];
        const auto state = owned(xcb_get_window_attributes_reply(
            connection_, xcb_get_window_attributes(connection_, id), nullptr));
        if (state && state->override_redirect && state->map_state == XCB_MAP_STATE_VIEWABLE) {
            return true;
        }
    }
    return false;
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
