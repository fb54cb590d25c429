#include "platform/virtual/fonts.h"

#include <algorithm>

#include <pango/pangocairo.h>

namespace tandrel {
namespace {

constexpr double kPointsPerInch = 72;  // so that one unit of a font size is one point of the screen
constexpr const char* kFamily = "Inter,sans-serif";

struct Unref {
    void operator()(gpointer object) const { g_object_unref(object); }
};
using LayoutPtr = std::unique_ptr<PangoLayout, Unref>;

PangoWeight pangoWeight(Weight weight) {
    switch (weight) {
        case Weight::regular:
            return PANGO_WEIGHT_NORMAL;
        case Weight::medium:
            return PANGO_WEIGHT_MEDIUM;
        case Weight::semibold:
            return PANGO_WEIGHT_SEMIBOLD;
        case Weight::bold:
            return PANGO_WEIGHT_BOLD;
    }
    return PANGO_WEIGHT_NORMAL;
}

PangoAlignment pangoAlignment(TextStyle::Align align) {
    switch (align) {
        case TextStyle::Align::left:
            return PANGO_ALIGN_LEFT;
        case TextStyle::Align::center:
            return PANGO_ALIGN_CENTER;
        case TextStyle::Align::right:
            return PANGO_ALIGN_RIGHT;
    }
    return PANGO_ALIGN_LEFT;
}

// One line stands in the middle of its rectangle.
double topOf(PangoLayout* layout, const TextShape& shape) {
    if (shape.style.lines == Lines::many) return shape.rect.y;
    PangoRectangle extent;
    pango_layout_get_extents(layout, nullptr, &extent);
    return shape.rect.y +
           (shape.rect.height - static_cast<double>(extent.height) / PANGO_SCALE) / 2;
}

}  // namespace

struct Fonts::Context {
    std::unique_ptr<PangoFontMap, Unref> map{pango_cairo_font_map_new()};
    std::unique_ptr<PangoContext, Unref> pango;

    Context() {
        pango_cairo_font_map_set_resolution(PANGO_CAIRO_FONT_MAP(map.get()), kPointsPerInch);
        pango.reset(pango_font_map_create_context(map.get()));
        pango_context_set_round_glyph_positions(pango.get(), FALSE);
        cairo_font_options_t* options = cairo_font_options_create();
        cairo_font_options_set_antialias(options, CAIRO_ANTIALIAS_GRAY);
        cairo_font_options_set_hint_style(options, CAIRO_HINT_STYLE_NONE);
        cairo_font_options_set_hint_metrics(options, CAIRO_HINT_METRICS_OFF);
        pango_cairo_context_set_font_options(pango.get(), options);
        cairo_font_options_destroy(options);
    }

    LayoutPtr layOut(const std::string& text, const TextStyle& style, double width) const {
        LayoutPtr layout(pango_layout_new(pango.get()));
        PangoFontDescription* font = pango_font_description_from_string(kFamily);
        pango_font_description_set_absolute_size(font, style.size * PANGO_SCALE);
        pango_font_description_set_weight(font, pangoWeight(style.weight));
        pango_layout_set_font_description(layout.get(), font);
        pango_font_description_free(font);
        pango_layout_set_text(layout.get(), text.data(), static_cast<int>(text.size()));
        pango_layout_set_alignment(layout.get(), pangoAlignment(style.align));
        pango_layout_set_width(layout.get(), static_cast<int>(std::max(width, 1.0) * PANGO_SCALE));
        if (style.lines != Lines::many) {
            pango_layout_set_single_paragraph_mode(layout.get(), TRUE);
            pango_layout_set_ellipsize(layout.get(), style.lines == Lines::one
                                                         ? PANGO_ELLIPSIZE_END
                                                         : PANGO_ELLIPSIZE_START);
        } else {
            pango_layout_set_wrap(layout.get(), PANGO_WRAP_WORD_CHAR);
            pango_layout_set_line_spacing(layout.get(), 1.12F);
        }
        return layout;
    }
};

Fonts::Fonts() : context_(std::make_unique<Context>()) {}

Fonts::~Fonts() = default;

Fonts::Extent Fonts::measure(const std::string& text, const TextStyle& style, double width) {
    const auto layout = context_->layOut(text, style, width);
    PangoRectangle extent;
    pango_layout_get_extents(layout.get(), nullptr, &extent);
    return {.width = static_cast<double>(extent.width) / PANGO_SCALE,
            .height = static_cast<double>(extent.height) / PANGO_SCALE};
}

Point Fonts::caret(const std::string& text, const TextStyle& style, double width) {
    const auto layout = context_->layOut(text, style, width);
    PangoRectangle place;
    pango_layout_get_cursor_pos(layout.get(), static_cast<int>(text.size()), &place, nullptr);
    return {std::min(static_cast<double>(place.x) / PANGO_SCALE, width),
            static_cast<double>(place.y) / PANGO_SCALE};
}

void Fonts::draw(cairo_t* cairo, const TextShape& shape) {
    const auto& [rect, text, style] = shape;
    const auto layout = context_->layOut(text, style, rect.width);
    const double y = topOf(layout.get(), shape);
    cairo_set_source_rgba(cairo, style.color.red, style.color.green, style.color.blue,
                          style.color.alpha);
    cairo_move_to(cairo, rect.x, y);
    pango_cairo_show_layout(cairo, layout.get());
}

std::vector<SetLine> Fonts::lines(const TextShape& shape) {
    const auto layout = context_->layOut(shape.text, shape.style, shape.rect.width);
    const double top = topOf(layout.get(), shape);
    const bool isCut = pango_layout_is_ellipsized(layout.get()) != FALSE;
    std::vector<SetLine> lines;
    PangoLayoutIter* at = pango_layout_get_iter(layout.get());
    do {
        const PangoLayoutLine* line = pango_layout_iter_get_line_readonly(at);
        PangoRectangle ink;
        pango_layout_iter_get_line_extents(at, &ink, nullptr);
        const auto begin = static_cast<std::size_t>(line->start_index);
        lines.push_back({.text = shape.text.substr(begin, static_cast<std::size_t>(line->length)),
                         .ink = {shape.rect.x + static_cast<double>(ink.x) / PANGO_SCALE,
                                 top + static_cast<double>(ink.y) / PANGO_SCALE,
                                 static_cast<double>(ink.width) / PANGO_SCALE,
                                 static_cast<double>(ink.height) / PANGO_SCALE},
                         .isCut = isCut});
    } while (pango_layout_iter_next_line(at));
    pango_layout_iter_free(at);
    return lines;
}

}  // namespace tandrel
