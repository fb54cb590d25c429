#include "reading/gray_frame.h"

namespace tandrel {

GrayFrame GrayFrame::from(const PixelBuffer& image) {
    GrayFrame gray(image.width(), image.height());
    for (int y = 0; y < image.height(); ++y) {
        const std::uint8_t* from = image.row(y);
        std::uint8_t* to = gray.row(y);
        for (int x = 0; x < image.width(); ++x, from += PixelBuffer::kBytesPerPixel) {
            to[x] = static_cast<std::uint8_t>((from[0] * 29 + from[1] * 150 + from[2] * 77) >> 8);
        }
    }
    return gray;
}

}  // namespace tandrel
