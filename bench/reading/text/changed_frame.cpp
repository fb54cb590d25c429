#include <cstring>

#include <pango/pangocairo.h>

#include "text/known_frame.h"

namespace tandrel {

namespace {

constexpr int kScrollPixels = 137;

void copyRows(const PixelBuffer& from, int fromY, int count, std::uint8_t* to, int rowBytes,
              int toY) {
    for (int y = 0; y < count; ++y) {
        std::memcpy(to + std::ptrdiff_t{toY + y} * rowBytes, from.row(fromY + y),
                    static_cast<std::size_t>(from.width()) * PixelBuffer::kBytesPerPixel);
    }
}

}  // namespace

PixelBuffer withOneRowChanged(const PixelBuffer& picture) {
    return PixelBuffer::make(
        picture.width(), picture.height(), [&](std::uint8_t* pixels, int rowBytes) {
            copyRows(picture, 0, picture.height(), pixels, rowBytes, 0);
            cairo_surface_t* surface = cairo_image_surface_create_for_data(
                pixels, CAIRO_FORMAT_RGB24, picture.width(), picture.height(), rowBytes);
            cairo_t* cairo = cairo_create(surface);
            const double unit = picture.width() / 390.0, y = picture.height() / 2.0;
            cairo_set_source_rgb(cairo, 1, 1, 1);
            cairo_rectangle(cairo, 0, y, picture.width(), 44 * unit);
            cairo_fill(cairo);
            cairo_set_source_rgb(cairo, 0, 0, 0);
            cairo_select_font_face(cairo, "Inter", CAIRO_FONT_SLANT_NORMAL,
                                   CAIRO_FONT_WEIGHT_NORMAL);
            cairo_set_font_size(cairo, 17 * unit);
            cairo_move_to(cairo, 20 * unit, y + 28 * unit);
            cairo_show_text(cairo, "Updated a moment ago");
            cairo_destroy(cairo);
            cairo_surface_destroy(surface);
        });
}

PixelBuffer scrolled(const PixelBuffer& picture) {
    const int top = picture.height() / 16, bottom = picture.height() - picture.height() / 12;
    const int moved = bottom - top - kScrollPixels;
    return PixelBuffer::make(
        picture.width(), picture.height(), [&](std::uint8_t* pixels, int rowBytes) {
            copyRows(picture, 0, picture.height(), pixels, rowBytes, 0);
            if (moved > 0) copyRows(picture, top + kScrollPixels, moved, pixels, rowBytes, top);
            // What comes into view below is what was just above it, so there is text to read.
            const int fresh = std::min(kScrollPixels, moved);
            if (fresh > 0) copyRows(picture, top, fresh, pixels, rowBytes, bottom - fresh);
        });
}

}  // namespace tandrel
