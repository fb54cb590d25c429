// Writes a PNG picture of the visible window of a title:
//   window_picture DISPLAY TITLE FILE
#include <cstdio>
#include <cstdlib>

#include "app/x_display.h"
#include "base/file.h"
#include "platform/linux/x_image.h"
#include "screen/snapshot.h"

int main(int argc, char** argv) {
    using namespace tandrel;
    if (argc != 4) return 2;
    ::setenv("DISPLAY", argv[1], 1);
    const auto x = XConnection::open();
    const auto window = x ? XDisplay(**x).find(argv[2]) : std::nullopt;
    if (!window) {
        std::fprintf(stderr, "no window is called %s\n", argv[2]);
        return 1;
    }
    const auto picture = XImageSource(**x).fetch(window->id, window->width, window->height);
    const auto png = encodeSnapshot(picture, {});
    return png && replaceFile(argv[3], toText(*png)) ? 0 : 1;
}
