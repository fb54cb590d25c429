#include <array>
#include <cmath>
#include <numbers>
#include <random>

#include <cairo.h>
#include <fmt/format.h>

#include "text/drawn_parts.h"

// Parts of a screen with pictures, in which much looks like text.
namespace tandrel {

namespace {

// In all directions around the text, as maps have it around their labels.
void writeWithHalo(DrawnPage& page, double x, double y, const std::string& text, double points,
                   Colour colour, Colour halo) {
    for (int step = 0; step < 9; ++step) {
        if (step == 4) continue;
        page.frame().text(x + (step % 3 - 1) * 1.0, y + (step / 3 - 1) * 1.0, text,
                          {page.font(), points, halo});
    }
    page.write(x, y, text, points, colour);
}

// What a photo looks like from afar: patches, blades and blots, different ones for each seed.
void drawTexture(cairo_t* cairo, double x, double y, double width, double height, int seed) {
    std::mt19937 random(static_cast<unsigned>(seed));
    auto part = [&] { return static_cast<double>(random() % 1000) / 999; };
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

// Darkens the area from above, or brightens it where `amount` is below 0.
void drawShade(cairo_t* cairo, double x, double y, double width, double height, double amount) {
    cairo_pattern_t* pattern = cairo_pattern_create_linear(0, y, 0, y + height);
    const double grey = amount > 0 ? 0 : 1, most = std::abs(amount);
    cairo_pattern_add_color_stop_rgba(pattern, 0, grey, grey, grey, most * 0.6);
    cairo_pattern_add_color_stop_rgba(pattern, 1, grey, grey, grey, most);
    cairo_set_source(cairo, pattern);
    cairo_rectangle(cairo, x, y, width, height);
    cairo_fill(cairo);
    cairo_pattern_destroy(pattern);
}

}  // namespace

double drawChart(DrawnPage& page, double y) {
    constexpr std::array kDays = {"Mon", "Tue", "Wed", "Thu", "Fri", "Sat", "Sun"};
    const DrawnTheme& theme = page.theme();
    const double left = 44, right = page.width() - 16, height = 150;
    const double size = page.between(10, 13);
    const int unit = std::array{1, 5, 20, 50, 250}[static_cast<std::size_t>(page.pick(5))];
    for (int i = 0; i <= 4; ++i) {
        const double at = y + height - height * i / 4.0;
        page.frame().line(left, at, right, at, 0.5, theme.faint);
        page.writeBefore(left - 6, at + size * 0.36, std::to_string(unit * i), size, theme.faint);
    }
    const double step = (right - left) / kDays.size();
    const bool bars = page.pick(2);
    double before = 0;
    for (std::size_t day = 0; day < kDays.size(); ++day) {
        const double x = left + step * (static_cast<double>(day) + 0.5);
        const double value = page.between(10, height - 10);
        if (bars) {
            page.frame().rectangle(x - step / 4, y + height - value, step / 2, value, 3,
                                   theme.button);
        } else if (day > 0) {
            page.frame().line(x - step, y + height - before, x, y + height - value, 2,
                              theme.button);
        }
        before = value;
        page.writeCentred(x, y + height + 6 + size, kDays[day], size, theme.faint);
    }
    return y + height + 36;
}

double drawMap(DrawnPage& page, double y) {
    constexpr std::array kPlaces = {"Phoenix",   "Tucson",      "Nogales",     "Riverside",
                                    "High St",   "Old Harbour", "Park Avenue", "Green Lake",
                                    "Northgate", "Mill Lane",   "Union Square"};
    DrawnFrame& frame = page.frame();
    const double height = 240;
    const bool dark = page.theme().paper.red < 0.5;
    const Colour land = dark ? Colour{0.16, 0.17, 0.2} : Colour{0.95, 0.93, 0.9};
    const Colour road = dark ? Colour{0.3, 0.31, 0.36} : Colour{1, 1, 1};
    const Colour water = dark ? Colour{0.1, 0.16, 0.27} : Colour{0.67, 0.83, 0.95};
    const Colour label = dark ? Colour{0.85, 0.86, 0.9} : Colour{0.3, 0.3, 0.33};
    frame.rectangle(0, y, page.width(), height, 0, land);
    frame.disc(page.between(40, page.width() - 40), y + page.between(60, 180), 46, water);
    for (int i = 0; i < 14; ++i) {
        const double from = page.between(0, 1), to = page.between(0, 1);
        if (i % 2) {
            frame.line(0, y + from * height, page.width(), y + to * height, page.between(1, 5),
                       road);
        } else {
            frame.line(from * page.width(), y, to * page.width(), y + height, page.between(1, 5),
                       road);
        }
    }
    for (int i = 0; i < 6; ++i) {
        const double size = page.between(11, 16);
        const double x = 20 + (i % 2) * page.width() / 2 + page.between(0, 40);
        writeWithHalo(page, x, y + 34 + (i / 2) * 76 + page.between(0, 30), page.oneOf(kPlaces),
                      size, label, land);
    }
    return y + height + 12;
}

double drawPhoto(DrawnPage& page, double y) {
    DrawnFrame& frame = page.frame();
    const double height = 210;
    drawTexture(frame.canvas(), 0, y, page.width(), height, page.pick(100000));
    const bool white = page.pick(4) > 0;
    const Colour ink = white ? kWhite : kBlack;
    if (page.pick(2)) drawShade(frame.canvas(), 0, y, page.width(), height, white ? 0.45 : -0.45);
    const double size = page.between(16, 34);
    page.writeFitting(20, y + 60, page.width() - 40, page.words(), size, ink);
    page.write(20, y + 96, page.words(), page.between(12, 16), ink);
    frame.rectangle(20, y + 140, 140, 36, 18, page.theme().button);
    page.writeCentred(90, y + 163, page.buttonWords(), 14, page.theme().onButton);
    page.writeBefore(page.width() - 20, y + 163, page.amount(), page.between(14, 22), ink,
                     {.isAmount = true});
    return y + height + 12;
}

}  // namespace tandrel
