#include "platform/linux/x_desktop.h"

#include <filesystem>
#include <stdexcept>

#include "support/eventually.h"

namespace tandrel {
namespace {

constexpr const char* kServer = "/usr/bin/Xvfb";
constexpr const char* kManager = "/usr/bin/openbox";

}  // namespace

std::unique_ptr<XDesktop> XDesktop::open(Manager manager, const std::string& size) {
    const bool isManaged = manager == Manager::openbox;
    if (!std::filesystem::exists(kServer)) return nullptr;
    if (isManaged && !std::filesystem::exists(kManager)) return nullptr;
    // It complains aloud about numbers that are taken; only the number it found counts.
    const std::string command = std::string("exec ") + kServer + " -displayfd 1 -screen 0 " + size +
                                "x24 -nolisten tcp 2>/dev/null";
    auto server =
        std::make_unique<ChildProgram>(std::vector<std::string>{"/bin/sh", "-c", command},
                                       ChildProgram::Environment{{"PATH", "/usr/bin:/bin"}});
    if (!server->awaitOutput("\n")) return nullptr;
    std::string name = ":" + server->output().substr(0, server->output().find('\n'));
    std::unique_ptr<XDesktop> desktop(new XDesktop(std::move(server), std::move(name)));
    if (!isManaged) return desktop;
    desktop->manager_ = std::make_unique<ChildProgram>(
        std::vector<std::string>{kManager},
        ChildProgram::Environment{{"PATH", "/usr/bin:/bin"}, {"DISPLAY", desktop->name_}});
    const bool isUp = eventually([&] {
        const XConnection& x = desktop->x();
        return !x.numbers(x.root(), x.atom("_NET_SUPPORTING_WM_CHECK")).empty();
    });
    return isUp ? std::move(desktop) : nullptr;
}

XDesktop::XDesktop(std::unique_ptr<ChildProgram> server, std::string name)
    : server_(std::move(server)), name_(std::move(name)), display_("DISPLAY", name_) {
    auto x = XConnection::open();
    if (!x) throw std::runtime_error(x.error().message);
    x_ = *std::move(x);
}

XTestWindow::XTestWindow(const XDesktop& desktop, const std::string& title, Place place)
    : desktop_(desktop),
      id_(xcb_generate_id(desktop.x().get())),
      pen_(xcb_generate_id(desktop.x().get())) {
    xcb_connection_t* c = desktop_.x().get();
    xcb_create_window(c, XCB_COPY_FROM_PARENT, id_, desktop_.x().root(), place.x, place.y,
                      place.width, place.height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT,
                      XCB_COPY_FROM_PARENT, 0, nullptr);
    setText(XCB_ATOM_WM_NAME, title);
    xcb_create_gc(c, pen_, id_, 0, nullptr);
    // A window manager that is just coming up loses the first requests.
    eventually([&] {
        restore();
        return isShown();
    });
}

bool XTestWindow::isShown() const {
    xcb_connection_t* c = desktop_.x().get();
    const auto state =
        xReply(xcb_get_window_attributes_reply(c, xcb_get_window_attributes(c, id_), nullptr));
    return state && state->map_state == XCB_MAP_STATE_VIEWABLE;
}

void XTestWindow::fill(std::uint32_t colour, Place area) {
    xcb_connection_t* c = desktop_.x().get();
    xcb_change_gc(c, pen_, XCB_GC_FOREGROUND, &colour);
    const xcb_rectangle_t rectangle{area.x, area.y, area.width, area.height};
    xcb_poly_fill_rectangle(c, id_, pen_, 1, &rectangle);
    desktop_.x().sync();
}

void XTestWindow::configure(std::uint16_t what, std::vector<int> values) {
    xcb_configure_window(desktop_.x().get(), id_, what, values.data());
    desktop_.x().sync();
}

void XTestWindow::ask(const char* what, std::uint32_t value) {
    const XConnection& x = desktop_.x();
    xcb_client_message_event_t message{};
    message.response_type = XCB_CLIENT_MESSAGE;
    message.format = 32;
    message.window = id_;
    message.type = x.atom(what);
    message.data.data32[0] = value;
    xcb_send_event(x.get(), 0, x.root(),
                   XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT | XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY,
                   reinterpret_cast<const char*>(&message));
    desktop_.x().sync();
}

void XTestWindow::restore() {
    xcb_map_window(desktop_.x().get(), id_);
    desktop_.x().sync();
}

void XTestWindow::close() {
    xcb_destroy_window(desktop_.x().get(), id_);
    desktop_.x().sync();
}

void XTestWindow::setText(xcb_atom_t property, const std::string& text) {
    xcb_change_property(desktop_.x().get(), XCB_PROP_MODE_REPLACE, id_, property, XCB_ATOM_STRING,
                        8, static_cast<std::uint32_t>(text.size()), text.data());
    desktop_.x().sync();
}

}  // namespace tandrel
