#include <chrono>
#include <cstdlib>
#include <cstring>
#include <thread>

#include <xcb/xcb.h>

// Draws a window without class or process number, as a GL picture's is, until it is killed:
//   draw_window WIDTH HEIGHT FRAMES_PER_SECOND
int main(int count, char** words) {
    if (count != 4) return 2;
    const auto width = static_cast<std::uint16_t>(std::atoi(words[1]));
    const auto height = static_cast<std::uint16_t>(std::atoi(words[2]));
    const std::chrono::nanoseconds interval(1'000'000'000 / std::max(std::atoi(words[3]), 1));
    xcb_connection_t* x = xcb_connect(nullptr, nullptr);
    if (xcb_connection_has_error(x) != 0) return 1;
    const xcb_screen_t* screen = xcb_setup_roots_iterator(xcb_get_setup(x)).data;
    const std::uint32_t window = xcb_generate_id(x);
    const std::uint32_t pen = xcb_generate_id(x);
    xcb_create_window(x, XCB_COPY_FROM_PARENT, window, screen->root, 0, 0, width, height, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    constexpr const char* kTitle = "OpenGL renderer";
    xcb_change_property(x, XCB_PROP_MODE_REPLACE, window, XCB_ATOM_WM_NAME, XCB_ATOM_STRING, 8,
                        static_cast<std::uint32_t>(std::strlen(kTitle)), kTitle);
    xcb_create_gc(x, pen, window, 0, nullptr);
    xcb_map_window(x, window);
    auto next = std::chrono::steady_clock::now();
    for (std::uint32_t frame = 0; xcb_connection_has_error(x) == 0; ++frame) {
        const std::uint32_t colour = 0x202040 + frame * 0x010305;
        xcb_change_gc(x, pen, XCB_GC_FOREGROUND, &colour);
        const xcb_rectangle_t all{0, 0, width, height};
        xcb_poly_fill_rectangle(x, window, pen, 1, &all);
        xcb_flush(x);
        next += interval;
        std::this_thread::sleep_until(next);
    }
    return 0;
}
