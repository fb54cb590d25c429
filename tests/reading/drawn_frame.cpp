#include "reading/drawn_frame.h"

#include <cstring>
#include <numbers>
#include <random>

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

double DrawnFrame::text(double x, double y, const std::string& words, const DrawnStyle& style) {
    const Layout layout(surface_->cairo, words, style);
    setColour(surface_->cairo, style.colour);
    cairo_move_to(surface_->cairo, x, y);
    pango_cairo_show_layout_line(surface_->cairo, pango_layout_get_line_readonly(layout.layout, 0));
    return layout.inkWidth();
}

double DrawnFrame::width(const std::string& words, const DrawnStyle& style) const {
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

void DrawnFrame::line(double x0, double y0, double x1, double y1, double thickness, Colour colour) {
    setColour(surface_->cairo, colour);
    cairo_set_line_width(surface_->cairo, thickness);
    cairo_move_to(surface_->cairo, x0, y0);
    cairo_line_to(surface_->cairo, x1, y1);
    cairo_stroke(surface_->cairo);
}

void DrawnFrame::disc(double x, double y, double radius, Colour fill) {
    cairo_arc(surface_->cairo, x, y, radius, 0, 2 * std::numbers::pi);
    setColour(surface_->cairo, fill);
    cairo_fill(surface_->cairo);
}

void DrawnFrame::texture(double x, double y, double width, double height, int seed) {
    std::mt19937 random(static_cast<unsigned>(seed));
    auto part = [&] { return static_cast<double>(random() % 1000) / 999; };
    cairo_t* cairo = surface_->cairo;
    cairo_save(cairo);
    cairo_rectangle(cairo, x, y, width, height);
    cairo_clip(cairo);
    cairo_set_source_rgb(cairo, 0.2 + 0.5 * part(), 0.2 + 0.5 * part(), 0.2 + 0.5 * part());
    cairo_paint(cairo);
    for (int i = 0; i < 160; ++i) {
        cairo_set_source_rgba(cairo, 0.8 * part(), 0.8 * part(), 0.8 * part(), 0.2 + 0.4 * part());
        const double centreX = x + part() * width, centreY = y + part() * height;
        cairo_move_to(cairo, centreX, centreY);
        if (i % 3 == 0) {
            cairo_arc(cairo, centreX, centreY, part() * width / 9, 0, 2 * std::numbers::pi);
            cairo_fill(cairo);
            continue;
        }
        cairo_line_to(cairo, centreX + (part() - 0.5) * width / 3,
                      centreY + (part() - 0.5) * width / 3);
        cairo_line_to(cairo, centreX + (part() - 0.5) * width / 3,
                      centreY + (part() - 0.5) * width / 3);
        cairo_set_line_width(cairo, 0.5 + 2 * part());
        if (i % 3 == 1) {
            cairo_fill(cairo);
        } else {
            cairo_stroke(cairo);
        }
    }
    cairo_restore(cairo);
}

void DrawnFrame::shade(double x, double y, double width, double height, double amount) {
    cairo_pattern_t* pattern = cairo_pattern_create_linear(0, y, 0, y + height);
    const double grey = amount > 0 ? 0 : 1, most = std::abs(amount);
    cairo_pattern_add_color_stop_rgba(pattern, 0, grey, grey, grey, most * 0.6);
    cairo_pattern_add_color_stop_rgba(pattern, 1, grey, grey, grey, most);
    cairo_set_source(surface_->cairo, pattern);
    cairo_rectangle(surface_->cairo, x, y, width, height);
    cairo_fill(surface_->cairo);
    cairo_pattern_destroy(pattern);
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
