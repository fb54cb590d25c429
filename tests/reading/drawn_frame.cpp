#include "reading/drawn_frame.h"

#include <cstring>
#include <numbers>

#include <pango/pangocairo.h>

namespace tandrel {

namespace {

void setColour(cairo_t* cairo, const Colour& colour) {
    cairo_set_source_rgb(cairo, colour.red, colour.green, colour.blue);
}

// One line laid out by Pango.
struct Layout {
    Layout(cairo_t* cairo, const std::string& words, const DrawnStyle& style)
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
    : pixels_(cairo_image_surface_create(CAIRO_FORMAT_RGB24, widthPixels, heightPixels)),
      cairo_(cairo_create(pixels_)) {
    setColour(cairo_, paper);
    cairo_paint(cairo_);
    cairo_scale(cairo_, density, density);
}

DrawnFrame::~DrawnFrame() {
    cairo_destroy(cairo_);
    cairo_surface_destroy(pixels_);
}

double DrawnFrame::text(double x, double y, const std::string& words, const DrawnStyle& style) {
    const Layout layout(cairo_, words, style);
    setColour(cairo_, style.colour);
    cairo_move_to(cairo_, x, y);
    pango_cairo_show_layout_line(cairo_, pango_layout_get_line_readonly(layout.layout, 0));
    return layout.inkWidth();
}

double DrawnFrame::width(const std::string& words, const DrawnStyle& style) const {
    return Layout(cairo_, words, style).inkWidth();
}

void DrawnFrame::path(double x, double y, double width, double height, double radius) {
    constexpr double kQuarter = std::numbers::pi / 2;
    cairo_new_sub_path(cairo_);
    cairo_arc(cairo_, x + width - radius, y + radius, radius, -kQuarter, 0);
    cairo_arc(cairo_, x + width - radius, y + height - radius, radius, 0, kQuarter);
    cairo_arc(cairo_, x + radius, y + height - radius, radius, kQuarter, 2 * kQuarter);
    cairo_arc(cairo_, x + radius, y + radius, radius, 2 * kQuarter, 3 * kQuarter);
    cairo_close_path(cairo_);
}

void DrawnFrame::rectangle(double x, double y, double width, double height, double radius,
                           Colour fill) {
    path(x, y, width, height, radius);
    setColour(cairo_, fill);
    cairo_fill(cairo_);
}

void DrawnFrame::outline(double x, double y, double width, double height, double radius,
                         Colour line) {
    path(x, y, width, height, radius);
    setColour(cairo_, line);
    cairo_set_line_width(cairo_, 1);
    cairo_stroke(cairo_);
}

void DrawnFrame::line(double x0, double y0, double x1, double y1, double thickness, Colour colour) {
    setColour(cairo_, colour);
    cairo_set_line_width(cairo_, thickness);
    cairo_move_to(cairo_, x0, y0);
    cairo_line_to(cairo_, x1, y1);
    cairo_stroke(cairo_);
}

void DrawnFrame::disc(double x, double y, double radius, Colour fill) {
    cairo_arc(cairo_, x, y, radius, 0, 2 * std::numbers::pi);
    setColour(cairo_, fill);
    cairo_fill(cairo_);
}

PixelBuffer DrawnFrame::frame() const {
    cairo_surface_flush(pixels_);
    const int width = cairo_image_surface_get_width(pixels_);
    const int height = cairo_image_surface_get_height(pixels_);
    const int stride = cairo_image_surface_get_stride(pixels_);
    const unsigned char* from = cairo_image_surface_get_data(pixels_);
    return PixelBuffer::make(width, height, [&](std::uint8_t* to, int rowBytes) {
        for (int y = 0; y < height; ++y) {
            std::memcpy(to + std::ptrdiff_t{y} * rowBytes, from + std::ptrdiff_t{y} * stride,
                        static_cast<std::size_t>(width) * 4);
        }
    });
}

}  // namespace tandrel
