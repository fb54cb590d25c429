#include "platform/linux/x_window_list.h"

#include <algorithm>
#include <optional>

#include <xcb/res.h>

#include "platform/linux/window_owner.h"

namespace tandrel {
namespace {

// A list that a client may have written is not walked without end.
constexpr std::size_t kMostWindows = 2000;

struct Atoms {
    explicit Atoms(const XConnection& x)
        : clientList(x.atom("_NET_CLIENT_LIST")),
          netName(x.atom("_NET_WM_NAME")),
          windowType(x.atom("_NET_WM_WINDOW_TYPE")),
          dock(x.atom("_NET_WM_WINDOW_TYPE_DOCK")),
          desktop(x.atom("_NET_WM_WINDOW_TYPE_DESKTOP")),
          role(x.atom("WM_WINDOW_ROLE")) {}

    const xcb_atom_t clientList;
    const xcb_atom_t netName;
    const xcb_atom_t windowType;
    const xcb_atom_t dock;
    const xcb_atom_t desktop;
    const xcb_atom_t role;
};

std::vector<xcb_window_t> children(const XConnection& x, xcb_window_t window) {
    const auto tree =
        xReply(xcb_query_tree_reply(x.get(), xcb_query_tree(x.get(), window), nullptr));
    if (!tree) return {};
    const xcb_window_t* first = xcb_query_tree_children(tree.get());
    return {first, first + xcb_query_tree_children_length(tree.get())};
}

std::vector<xcb_window_t> clients(const XConnection& x, const Atoms& atoms) {
    std::vector<xcb_window_t> windows = x.numbers(x.root(), atoms.clientList);
    if (windows.empty()) windows = children(x, x.root());
    if (windows.size() > kMostWindows) windows.resize(kMostWindows);
    return windows;
}

// The server knows who opened the connection that made the window, whatever its properties say.
pid_t ownerPid(const XConnection& x, xcb_window_t window) {
    if (!x.has(xcb_res_id)) return 0;
    xcb_res_client_id_spec_t wanted{window, XCB_RES_CLIENT_ID_MASK_LOCAL_CLIENT_PID};
    const auto reply = xReply(xcb_res_query_client_ids_reply(
        x.get(), xcb_res_query_client_ids(x.get(), 1, &wanted), nullptr));
    if (!reply) return 0;
    for (auto ids = xcb_res_query_client_ids_ids_iterator(reply.get()); ids.rem > 0;
         xcb_res_client_id_value_next(&ids)) {
        if (ids.data->length >= 4) {
            return static_cast<pid_t>(*xcb_res_client_id_value_value(ids.data));
        }
    }
    return 0;
}

std::string titleOf(const XConnection& x, const Atoms& atoms, xcb_window_t window) {
    const std::string title = x.text(window, atoms.netName);
    return title.empty() ? x.text(window, XCB_ATOM_WM_NAME) : title;
}

// WM_CLASS is two texts, each ended by a zero byte; the second is the class.
std::string classOf(const XConnection& x, xcb_window_t window) {
    const std::string both = x.text(window, XCB_ATOM_WM_CLASS);
    const auto end = both.find('\0');
    if (end == std::string::npos) return {};
    return {both.c_str() + end + 1};
}

bool isDesktopElement(const XConnection& x, const Atoms& atoms, xcb_window_t window) {
    const auto types = x.numbers(window, atoms.windowType);
    return std::ranges::any_of(
        types, [&](std::uint32_t type) { return type == atoms.dock || type == atoms.desktop; });
}

std::optional<WinInfo> describe(const XConnection& x, const Atoms& atoms, xcb_window_t window,
                                pid_t leftOut) {
    xcb_connection_t* c = x.get();
    // All three are on their way before the first is waited for.
    const auto askState = xcb_get_window_attributes(c, window);
    const auto askSize = xcb_get_geometry(c, window);
    const auto askPlace = xcb_translate_coordinates(c, window, x.root(), 0, 0);
    const auto state = xReply(xcb_get_window_attributes_reply(c, askState, nullptr));
    const auto size = xReply(xcb_get_geometry_reply(c, askSize, nullptr));
    const auto place = xReply(xcb_translate_coordinates_reply(c, askPlace, nullptr));
    if (!state || !size || !place) return std::nullopt;
    if (state->_class != XCB_WINDOW_CLASS_INPUT_OUTPUT || state->override_redirect != 0) {
        return std::nullopt;
    }
    if (isDesktopElement(x, atoms, window)) return std::nullopt;
    WinInfo info;
    info.id = window;
    info.pid = ownerPid(x, window);
    if (info.pid == leftOut) return std::nullopt;
    WindowOwner owner = windowOwner({.program = programOf(info.pid),
                                     .windowClass = classOf(x, window),
                                     .role = x.text(window, atoms.role)});
    info.owner = std::move(owner.name);
    info.bundle = std::move(owner.bundle);
    info.title = titleOf(x, atoms, window);
    info.frame = {double(place->dst_x), double(place->dst_y), double(size->width),
                  double(size->height)};
    info.onScreen = state->map_state == XCB_MAP_STATE_VIEWABLE;
    return info;
}

}  // namespace

std::vector<WinInfo> xWindowList(const XConnection& x, pid_t leftOut) {
    const Atoms atoms(x);
    std::vector<WinInfo> list;
    for (const xcb_window_t window : clients(x, atoms)) {
        if (auto info = describe(x, atoms, window, leftOut)) list.push_back(*std::move(info));
    }
    return list;
}

}  // namespace tandrel
