#include "platform/virtual/glyphs.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <numbers>

namespace tandrel {
namespace {

// clang-format off
constexpr Glyph kGlyphs[] = {
    {"airplane",  "M 12 2 C 13 2 13.5 3 13.5 5 L 13.5 9 L 22 14.5 L 22 16.5 L 13.5 14 L 13.5 18.5 L 16 20.5 L 16 22 L 12 21 L 8 22 L 8 20.5 L 10.5 18.5 L 10.5 14 L 2 16.5 L 2 14.5 L 10.5 9 L 10.5 5 C 10.5 3 11 2 12 2 Z F"},
    {"bag",       "R 4 8 16 13 2.5 F M 8.5 10 L 8.5 7 C 8.5 2.5 15.5 2.5 15.5 7 L 15.5 10 S 1.8"},
    {"bank",      "M 12 2.5 L 22 8.5 L 2 8.5 Z F R 4 10 2.6 8 0 R 8.5 10 2.6 8 0 R 13 10 2.6 8 0 R 17.5 10 2.6 8 0 R 2.5 19 19 2.5 0.6 F"},
    {"battery",   "R 1.5 7 18.5 10 3 S 1.5 R 3.5 9 14.5 6 1.5 R 21 10 2 4 1 F"},
    {"bell",      "M 12 2.5 C 7.5 2.5 6 6 6 10 C 6 14 5 15.5 3.5 17.5 L 20.5 17.5 C 19 15.5 18 14 18 10 C 18 6 16.5 2.5 12 2.5 Z O 12 19.5 2.2 F"},
    {"bluetooth", "M 7 7.5 L 17 16.5 L 12 21 L 12 3 L 17 7.5 L 7 16.5 S 2"},
    {"bubble",    "M 12 4 C 6 4 2 7.4 2 11.5 C 2 14 3.4 16.2 5.7 17.6 C 5.6 19 5 20.3 4 21.3 C 6 21.2 8 20.3 9.3 18.7 C 10.2 18.9 11 19 12 19 C 18 19 22 15.6 22 11.5 C 22 7.4 18 4 12 4 Z F"},
    {"calendar",  "R 3 4 18 17 3 S 1.6 R 3 4 18 5 2 F O 8 13 1.3 O 12 13 1.3 O 16 13 1.3 O 8 17 1.3 O 12 17 1.3 F"},
    {"camera",    "R 2 7 20 13 3 R 8 4 8 3 1.5 O 12 13.5 4 E"},
    {"chevron",   "M 9 5 L 16 12 L 9 19 S 2.6"},
    {"back",      "M 15.5 4 L 7.5 12 L 15.5 20 S 2.4"},
    {"clock",     "O 12 12 9.2 S 1.8 M 12 6.5 L 12 12 L 15.8 14.3 S 1.8"},
    {"flower",    "O 12 6 3.6 O 17.2 9 3.6 O 17.2 15 3.6 O 12 18 3.6 O 6.8 15 3.6 O 6.8 9 3.6 E"},
    {"gear",      "O 12 12 7.4 S 3.4 M 12 1.6 L 12 4.6 M 12 19.4 L 12 22.4 M 1.6 12 L 4.6 12 M 19.4 12 L 22.4 12 M 4.7 4.7 L 6.7 6.7 M 17.3 17.3 L 19.3 19.3 M 4.7 19.3 L 6.7 17.3 M 17.3 6.7 L 19.3 4.7 S 3 O 12 12 2 F"},
    {"figure",    "O 12 5.5 2.3 F M 4.5 9 L 19.5 9 S 2 M 12 9 L 12 14 M 12 13.5 L 8.5 21 M 12 13.5 L 15.5 21 S 2"},
    {"heart",     "M 12 21 C 4 15 2 12 2 8.5 C 2 5.5 4.2 3.5 7 3.5 C 9.2 3.5 11 4.7 12 6.5 C 13 4.7 14.8 3.5 17 3.5 C 19.8 3.5 22 5.5 22 8.5 C 22 12 20 15 12 21 Z F"},
    {"hourglass", "M 6 2.5 L 18 2.5 L 18 6 L 13.2 12 L 18 18 L 18 21.5 L 6 21.5 L 6 18 L 10.8 12 L 6 6 Z F"},
    {"lock",      "R 5 10.5 14 11 2.5 F M 8 11 L 8 7.5 C 8 2.5 16 2.5 16 7.5 L 16 11 S 2"},
    {"magnifier", "O 10.5 10.5 6.6 S 2.2 M 15.5 15.5 L 21 21 S 2.4"},
    {"mail",      "R 2 5 20 14.5 2.5 S 1.7 M 3 6.5 L 12 13.5 L 21 6.5 S 1.7"},
    {"news",      "R 4 3 16 18 2 S 1.7 R 6.5 6 5.5 5 0.5 R 13.5 6 4 1.6 0 R 13.5 9.2 4 1.6 0 R 6.5 13 11 1.6 0 R 6.5 16.4 11 1.6 0 F"},
    {"note",      "R 4 3 16 18 2.5 S 1.8 M 7.5 8 L 16.5 8 M 7.5 12 L 16.5 12 M 7.5 16 L 13 16 S 1.8"},
    {"person",    "O 12 7.5 4.6 F M 3 21.5 C 3 16 7 13.5 12 13.5 C 17 13.5 21 16 21 21.5 Z F"},
    {"phone",     "M 6.5 2.5 L 9.5 7.5 L 7.5 10 C 9 13 11 15 14 16.5 L 16.5 14.5 L 21.5 17.5 C 21.5 20 19.5 21.8 17 21.5 C 9.5 20.5 3.5 14.5 2.5 7 C 2.2 4.5 4 2.5 6.5 2.5 Z F"},
    {"play",      "M 7 4 L 20 12 L 7 20 Z F"},
    {"signal",    "R 1.5 15 4 6 1 R 7 11.5 4 9.5 1 R 12.5 8 4 13 1 R 18 4.5 4 16.5 1 F"},
    {"speaker",   "M 3 9 L 7.5 9 L 13 4.5 L 13 19.5 L 7.5 15 L 3 15 Z F M 16 8.5 C 18 10.5 18 13.5 16 15.5 S 1.8 M 18.6 6 C 22 9.4 22 14.6 18.6 18 S 1.8"},
    {"sun",       "O 12 12 4.6 F M 12 2 L 12 4.8 M 12 19.2 L 12 22 M 2 12 L 4.8 12 M 19.2 12 L 22 12 M 4.9 4.9 L 6.9 6.9 M 17.1 17.1 L 19.1 19.1 M 4.9 19.1 L 6.9 17.1 M 17.1 6.9 L 19.1 4.9 S 2"},
    {"tick",      "M 5 12.5 L 10 17.5 L 19.5 7 S 2.6"},
    {"wifi",      "M 2.5 9.8 C 8 4.4 16 4.4 21.5 9.8 S 2.2 M 5.8 13.3 C 9.5 9.8 14.5 9.8 18.2 13.3 S 2.2 O 12 17.6 2.3 F"},
};
// clang-format on

constexpr double kUnits = 24;

// Reads the words of a path one after another.
class PathWords {
 public:
    explicit PathWords(std::string_view path) : rest_(path) {}

    std::string_view next() {
        const auto start = std::min(rest_.find_first_not_of(' '), rest_.size());
        rest_.remove_prefix(start);
        const auto word = rest_.substr(0, rest_.find(' '));
        rest_.remove_prefix(word.size());
        return word;
    }
    double number() {
        const auto word = next();
        double value = 0;
        std::from_chars(word.data(), word.data() + word.size(), value);
        return value;
    }
    template <std::size_t count>
    std::array<double, count> numbers() {
        std::array<double, count> values;
        for (double& value : values) value = number();
        return values;
    }

 private:
    std::string_view rest_;
};

void addRoundedBox(cairo_t* cairo, const std::array<double, 5>& box) {
    const auto [x, y, width, height, radius] = box;
    constexpr double kQuarter = std::numbers::pi / 2;
    cairo_new_sub_path(cairo);
    cairo_arc(cairo, x + width - radius, y + radius, radius, -kQuarter, 0);
    cairo_arc(cairo, x + width - radius, y + height - radius, radius, 0, kQuarter);
    cairo_arc(cairo, x + radius, y + height - radius, radius, kQuarter, 2 * kQuarter);
    cairo_arc(cairo, x + radius, y + radius, radius, 2 * kQuarter, 3 * kQuarter);
    cairo_close_path(cairo);
}

void fill(cairo_t* cairo, cairo_fill_rule_t rule) {
    cairo_set_fill_rule(cairo, rule);
    cairo_fill(cairo);
}

void runCommand(cairo_t* cairo, char command, PathWords& words) {
    switch (command) {
        case 'M': {
            const auto [x, y] = words.numbers<2>();
            return cairo_move_to(cairo, x, y);
        }
        case 'L': {
            const auto [x, y] = words.numbers<2>();
            return cairo_line_to(cairo, x, y);
        }
        case 'C': {
            const auto [x1, y1, x2, y2, x, y] = words.numbers<6>();
            return cairo_curve_to(cairo, x1, y1, x2, y2, x, y);
        }
        case 'O': {
            const auto [x, y, radius] = words.numbers<3>();
            cairo_new_sub_path(cairo);
            return cairo_arc(cairo, x, y, radius, 0, 2 * std::numbers::pi);
        }
        case 'R':
            return addRoundedBox(cairo, words.numbers<5>());
        case 'Z':
            return cairo_close_path(cairo);
        case 'F':
            return fill(cairo, CAIRO_FILL_RULE_WINDING);
        case 'E':
            return fill(cairo, CAIRO_FILL_RULE_EVEN_ODD);
        case 'S':
            cairo_set_line_width(cairo, words.number());
            return cairo_stroke(cairo);
        default:
            return;
    }
}

}  // namespace

const Glyph* findGlyph(std::string_view name) {
    const auto* found = std::ranges::find(kGlyphs, name, &Glyph::name);
    return found == std::end(kGlyphs) ? nullptr : found;
}

void drawGlyph(cairo_t* cairo, const Glyph& glyph, const Rect& place, const Color& color) {
    const double side = std::min(place.width, place.height);
    cairo_save(cairo);
    cairo_translate(cairo, place.center().x - side / 2, place.center().y - side / 2);
    cairo_scale(cairo, side / kUnits, side / kUnits);
    cairo_set_source_rgba(cairo, color.red, color.green, color.blue, color.alpha);
    cairo_set_line_cap(cairo, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_join(cairo, CAIRO_LINE_JOIN_ROUND);
    cairo_new_path(cairo);
    PathWords words(glyph.path);
    for (auto word = words.next(); !word.empty(); word = words.next()) {
        runCommand(cairo, word.front(), words);
    }
    cairo_restore(cairo);
}

}  // namespace tandrel
