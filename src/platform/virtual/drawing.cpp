#include "platform/virtual/drawing.h"

#include <algorithm>
#include <numbers>
#include <optional>
#include <random>

namespace tandrel {
namespace {

void setColor(cairo_t* cairo, const Color& color) {
    cairo_set_source_rgba(cairo, color.red, color.green, color.blue, color.alpha);
}

void roundedPath(cairo_t* cairo, const Rect& rect, double radius) {
    const double r = std::min({radius, rect.width / 2, rect.height / 2});
    cairo_new_path(cairo);
    if (r <= 0) return cairo_rectangle(cairo, rect.x, rect.y, rect.width, rect.height);
    constexpr double kQuarter = std::numbers::pi / 2;
    cairo_arc(cairo, rect.x + rect.width - r, rect.y + r, r, -kQuarter, 0);
    cairo_arc(cairo, rect.x + rect.width - r, rect.y + rect.height - r, r, 0, kQuarter);
    cairo_arc(cairo, rect.x + r, rect.y + rect.height - r, r, kQuarter, 2 * kQuarter);
    cairo_arc(cairo, rect.x + r, rect.y + r, r, 2 * kQuarter, 3 * kQuarter);
    cairo_close_path(cairo);
}

void disc(cairo_t* cairo, Point center, double radius) {
    cairo_new_path(cairo);
    cairo_arc(cairo, center.x, center.y, radius, 0, 2 * std::numbers::pi);
}

class ShapeDrawer {
 public:
    ShapeDrawer(cairo_t* cairo, Fonts& fonts) : cairo_(cairo), fonts_(fonts) {}

    void operator()(const BoxShape& box) const {
        roundedPath(cairo_, box.rect, box.radius);
        setColor(cairo_, box.color);
        cairo_fill(cairo_);
    }

    void operator()(const GradientShape& shape) const {
        const Rect& rect = shape.rect;
        cairo_pattern_t* pattern = cairo_pattern_create_linear(0, rect.y, 0, rect.y + rect.height);
        const auto stop = [pattern](double at, const Color& color) {
            cairo_pattern_add_color_stop_rgb(pattern, at, color.red, color.green, color.blue);
        };
        stop(0, shape.top);
        stop(1, shape.bottom);
        cairo_set_source(cairo_, pattern);
        cairo_rectangle(cairo_, rect.x, rect.y, rect.width, rect.height);
        cairo_fill(cairo_);
        cairo_pattern_destroy(pattern);
    }

    void operator()(const TextShape& text) const { fonts_.draw(cairo_, text); }

    void operator()(const GlyphShape& shape) const {
        if (shape.glyph != nullptr) drawGlyph(cairo_, *shape.glyph, shape.rect, shape.color);
    }

    void operator()(const PictureShape& shape) const {
        constexpr int kDiscs = 24;
        std::minstd_rand random(shape.seed + 1);
        const auto fraction = [&random] {
            return static_cast<double>(random()) / static_cast<double>(std::minstd_rand::max());
        };
        cairo_save(cairo_);
        roundedPath(cairo_, shape.rect, shape.radius);
        cairo_clip(cairo_);
        setColor(cairo_, shape.color);
        cairo_paint(cairo_);
        for (int i = 0; i < kDiscs; ++i) {
            const Point center{shape.rect.x + fraction() * shape.rect.width,
                               shape.rect.y + fraction() * shape.rect.height};
            disc(cairo_, center, (0.05 + 0.25 * fraction()) * shape.rect.height);
            const double grey = fraction();
            setColor(cairo_, {grey, grey * fraction(), fraction(), 0.18});
            cairo_fill(cairo_);
        }
        cairo_restore(cairo_);
    }

 private:
    cairo_t* cairo_;
    Fonts& fonts_;
};

double top(const Shape& shape) {
    return std::visit([](const auto& any) { return any.rect.y; }, shape);
}

double bottom(const Shape& shape) {
    return std::visit([](const auto& any) { return any.rect.y + any.rect.height; }, shape);
}

}  // namespace

void drawDisplayList(cairo_t* cairo, Fonts& fonts, const DisplayList& list, double width,
                     double height, double scroll) {
    setColor(cairo, list.background);
    cairo_rectangle(cairo, 0, 0, width, height);
    cairo_fill(cairo);
    const ShapeDrawer draw(cairo, fonts);
    cairo_save(cairo);
    cairo_translate(cairo, 0, -scroll);
    for (const Shape& shape : list.content.shapes) {
        if (bottom(shape) >= scroll && top(shape) <= scroll + height) std::visit(draw, shape);
    }
    cairo_restore(cairo);
    for (const Shape& shape : list.bars.shapes) std::visit(draw, shape);
}

void drawPointer(cairo_t* cairo, Point center) {
    constexpr double kRing = 2.5;
    disc(cairo, center, kPointerRadius);
    setColor(cairo, rgb(0x2A2A2C, 0.62));
    cairo_fill(cairo);
    disc(cairo, center, kPointerRadius - kRing / 2);
    setColor(cairo, rgb(0xFFFFFF, 0.85));
    cairo_set_line_width(cairo, kRing);
    cairo_stroke(cairo);
}

}  // namespace tandrel
