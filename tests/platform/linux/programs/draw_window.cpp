#include <unistd.h>
#include <xcb/xcb.h>

// Shows a window without class or process number, as a GL picture's is, until it is killed.
int main() {
    xcb_connection_t* x = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(x) != 0) return 1;
    const xcb_window_t root = xcb_setup_roots_iterator(xcb_get_setup(x)).data->root;
    const xcb_window_t window = xcb_generate_id(x);
    xcb_create_window(x, XCB_COPY_FROM_PARENT, window, root, 0, 0, 590, 1280, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8, 15,
                        "OpenGL renderer");
    xcb_map_window(x, window);
    xcb_flush(x);
    ::pause();
}
