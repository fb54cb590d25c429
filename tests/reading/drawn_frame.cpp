#include "reading/drawn_frame.h"

#include <cstring>
#include <numbers>

#include <pango/pangocairo.h>

namespace tandrel {

struct DrawnFrame::Surface {
    cairo_surface_t* pixels;
    cairo_t* cairo;
};

namespace {

void setColour(cairo_t* cairo, const Colour& colour) {
    cairo_set_source_rgb(cairo, colour.red, colour.green, colour.blue);
}

// One line laid out by Pango.
struct Layout {
    Layout(cairo_t* cairo, const std::string& words, const TextStyle& style)
        : layout(pango_cairo_create_layout(cairo)) {
        PangoFontDescription* font = pango_font_description_from_string(style.font.c_str());
        pango_font_description_set_absolute_size(font, style.points * PANGO_SCALE);
        pango_layout_set_font_description(layout, font);
        pango_layout_set_text(layout, words.c_str(), static_cast<int>(words.size()));
        pango_font_description_free(font);
    }
    ~Layout() { g_object_unref(layout); }
    Layout(const Layout&) = delete;
    Layout& operator=(const Layout&) = delete;

    double inkWidth() const {
        PangoRectangle ink;
        pango_layout_get_pixel_extents(layout, &ink, nullptr);
        return ink.width;
    }

    PangoLayout* layout;
};

}  // namespace

DrawnFrame::DrawnFrame(int widthPixels, int heightPixels, int density, Colour paper)
    : surface_(new Surface) {
    surface_->pixels = cairo_image_surface_create(CAIRO_FORMAT_RGB24, widthPixels, heightPixels);
    surface_->cairo = cairo_create(surface_->pixels);
    setColour(surface_->cairo, paper);
    cairo_paint(surface_->cairo);
    cairo_scale(surface_->cairo, density, density);
}

DrawnFrame::~DrawnFrame() {
    cairo_destroy(surface_->cairo);
    cairo_surface_destroy(surface_->pixels);
    delete surface_;
}

double DrawnFrame::text(double x, double y, const std::string& words, const TextStyle& style) {
    const Layout layout(surface_->cairo, words, style);
    setColour(surface_->cairo, style.colour);
    cairo_move_to(surface_->cairo, x, y);
    pango_cairo_show_layout_line(surface_->cairo, pango_layout_get_line_readonly(layout.layout, 0));
    return layout.inkWidth();
}

double DrawnFrame::width(const std::string& words, const TextStyle& style) const {
    return Layout(surface_->cairo, words, style).inkWidth();
}

void DrawnFrame::path(double x, double y, double width, double height, double radius) {
    constexpr double kQuarter = std::numbers::pi / 2;
    cairo_t* cairo = surface_->cairo;
    cairo_new_sub_path(cairo);
    cairo_arc(cairo, x + width - radius, y + radius, radius, -kQuarter, 0);
    cairo_arc(cairo, x + width - radius, y + height - radius, radius, 0, kQuarter);
    cairo_arc(cairo, x + radius, y + height - radius, radius, kQuarter, 2 * kQuarter);
    cairo_arc(cairo, x + radius, y + radius, radius, 2 * kQuarter, 3 * kQuarter);
    cairo_close_path(cairo);
}

void DrawnFrame::rectangle(double x, double y, double width, double height, double radius,
                           Colour fill) {
    path(x, y, width, height, radius);
    setColour(surface_->cairo, fill);
    cairo_fill(surface_->cairo);
}

void DrawnFrame::outline(double x, double y, double width, double height, double radius,
                         Colour line) {
    path(x, y, width, height, radius);
    setColour(surface_->cairo, line);
    cairo_set_line_width(surface_->cairo, 1);
    cairo_stroke(surface_->cairo);
}

PixelBuffer DrawnFrame::frame() const {
    cairo_surface_flush(surface_->pixels);
    const int width = cairo_image_surface_get_width(surface_->pixels);
    const int height = cairo_image_surface_get_height(surface_->pixels);
    const int stride = cairo_image_surface_get_stride(surface_->pixels);
    const unsigned char* from = cairo_image_surface_get_data(surface_->pixels);
    return PixelBuffer::make(width, height, [&](std::uint8_t* to, int rowBytes) {
        for (int y = 0; y < height; ++y) {
            std::memcpy(to + std::ptrdiff_t{y} * rowBytes, from + std::ptrdiff_t{y} * stride,
                        static_cast<std::size_t>(width) * 4);
        }
    });
}

}  // namespace tandrel
