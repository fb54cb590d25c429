// Writes a PNG picture of the visible window of a title:
//   window_picture DISPLAY TITLE FILE
#include <QImage>
#include <cstdio>

#include "app/x_display.h"

int main(int argc, char** argv) {
    if (argc != 4) return 2;
    const auto display = tandrel::XDisplay::attach(argv[1]);
    const auto window = display->find(argv[2]);
    if (!window) {
        std::fprintf(stderr, "no window is called %s\n", argv[2]);
        return 1;
    }
    auto pixels = display->pixels(*window);
    const QImage picture(reinterpret_cast<uchar*>(pixels.data()), window->width, window->height,
                         QImage::Format_RGB32);
    return picture.save(argv[3]) ? 0 : 1;
}
