#include "image/frames/frames.h"

#include <cmath>
#include <functional>
#include <memory>
#include <random>
#include <string>

#include <pango/pangocairo.h>

namespace tandrel::bench {
namespace {

struct Colour {
    double red, green, blue;
};

constexpr Colour grey(double level) { return {level, level, level}; }

struct Theme {
    Colour page, card, text, faint, line, keyboard, key;
};

constexpr Theme kLight{{0.95, 0.95, 0.97}, grey(1),         grey(0), grey(0.47),
                       grey(0.78),         {.82, .83, .85}, grey(1)};
constexpr Theme kDark{grey(0),         {.11, .11, .12}, grey(1),   grey(0.6),
                      {.22, .22, .23}, grey(0.16),      grey(0.42)};

// Draws on one picture with a fixed stream of random numbers.
class Pen {
 public:
    Pen(std::uint8_t* pixels, int rowBytes)
        : surface_(cairo_image_surface_create_for_data(pixels, CAIRO_FORMAT_RGB24, kFrameWidth,
                                                       kFrameHeight, rowBytes)),
          cairo_(cairo_create(surface_)) {}
    ~Pen() {
        cairo_destroy(cairo_);
        cairo_surface_destroy(surface_);
    }
    Pen(const Pen&) = delete;
    Pen& operator=(const Pen&) = delete;

    void box(double x, double y, double width, double height, Colour colour, double radius = 0) {
        cairo_set_source_rgb(cairo_, colour.red, colour.green, colour.blue);
        cairo_new_sub_path(cairo_);
        cairo_arc(cairo_, x + width - radius, y + radius, radius, -M_PI_2, 0);
        cairo_arc(cairo_, x + width - radius, y + height - radius, radius, 0, M_PI_2);
        cairo_arc(cairo_, x + radius, y + height - radius, radius, M_PI_2, M_PI);
        cairo_arc(cairo_, x + radius, y + radius, radius, M_PI, 3 * M_PI_2);
        cairo_fill(cairo_);
    }

    void text(double x, double y, const std::string& words, int size, Colour colour,
              const char* weight = "") {
        const std::unique_ptr<PangoLayout, decltype(&g_object_unref)> layout(
            pango_cairo_create_layout(cairo_), &g_object_unref);
        const std::string name = std::string("Inter, sans-serif ") + weight;
        PangoFontDescription* font = pango_font_description_from_string(name.c_str());
        pango_font_description_set_absolute_size(font, size * PANGO_SCALE);
        pango_layout_set_font_description(layout.get(), font);
        pango_font_description_free(font);
        pango_layout_set_text(layout.get(), words.c_str(), -1);
        cairo_set_source_rgb(cairo_, colour.red, colour.green, colour.blue);
        cairo_move_to(cairo_, x, y);
        pango_cairo_show_layout(cairo_, layout.get());
    }

    std::string words(int count) {
        constexpr std::array kWords{
            "meet",  "you",    "at",     "the",      "station", "tomorrow", "please",
            "bring", "blue",   "folder", "thanks",   "for",     "dinner",   "it",
            "was",   "lovely", "see",    "attached", "invoice", "parcel",   "delivered",
            "can",   "we",     "move",   "call",     "to",      "four"};
        std::string line;
        for (int i = 0; i < count; ++i) {
            line += kWords[random_() % kWords.size()];
            line += ' ';
        }
        return line;
    }

    Colour someColour() {
        const auto part = [this] { return 0.2 + static_cast<double>(random_() % 150) / 256; };
        return {part(), part(), part()};
    }

    void flush() { cairo_surface_flush(surface_); }

 private:
    cairo_surface_t* surface_;
    cairo_t* cairo_;
    std::mt19937 random_{5};
};

void statusAndTitle(Pen& pen, const Theme& theme) {
    pen.box(0, 0, kFrameWidth, kFrameHeight, theme.page);
    pen.text(90, 60, "9:41", 50, theme.text, "Bold");
    pen.box(1020, 66, 90, 44, theme.faint, 14);
    pen.text(60, 190, "Messages", 92, theme.text, "Bold");
    pen.box(48, 330, kFrameWidth - 96, 100, theme.line, 28);
    pen.text(110, 352, "Search", 50, theme.faint);
}

// Rows like those of a list of messages; returns where they end.
double messageRows(Pen& pen, const Theme& theme, double top, int count) {
    for (int i = 0; i < count; ++i, top += 200) {
        pen.box(0, top, kFrameWidth, 199, theme.card);
        pen.box(48, top + 30, 140, 140, pen.someColour(), 70);
        pen.text(96, top + 52, std::string(1, static_cast<char>('A' + i)), 70, grey(1), "Bold");
        pen.text(220, top + 24, pen.words(2), 48, theme.text, "Bold");
        pen.text(220, top + 88, pen.words(6), 38, theme.faint);
        pen.text(220, top + 136, pen.words(6), 38, theme.faint);
        pen.box(220, top + 199, kFrameWidth - 220, 1, theme.line);
    }
    return top;
}

void keyboard(Pen& pen, const Theme& theme, double top) {
    pen.box(0, top, kFrameWidth, kFrameHeight - top, theme.keyboard);
    double y = top + 30;
    for (const std::string row : {"qwertyuiop", "asdfghjkl", "zxcvbnm"}) {
        double x = (kFrameWidth - static_cast<double>(row.size()) * 116) / 2;
        for (const char letter : row) {
            pen.box(x + 7, y, 102, 120, theme.key, 14);
            pen.text(x + 38, y + 18, std::string(1, letter), 60, theme.text);
            x += 116;
        }
        y += 140;
    }
    pen.box(kFrameWidth / 2.0 - 210, kFrameHeight - 40, 420, 14, theme.text, 7);
}

void article(Pen& pen, const Theme& theme, double top) {
    for (double y = top; y < kFrameHeight - 120; y += 62)
        pen.text(60, y, pen.words(8), 42, theme.text);
}

// Soft blobs of colour under the noise of a sensor.
void photo(std::uint8_t* pixels, int rowBytes, int top, int height) {
    std::mt19937 random(5);
    std::normal_distribution<double> brightness(0, 3);
    std::normal_distribution<double> tint(0, 1.2);
    for (int y = top; y < top + height; ++y) {
        for (int x = 48; x < kFrameWidth - 48; ++x) {
            const double common = brightness(random) + 50 * std::sin(x / 160.0) +
                                  40 * std::cos((y - top) / 110.0 + x / 400.0);
            std::uint8_t* p = pixels + static_cast<std::ptrdiff_t>(y) * rowBytes + 4 * x;
            const auto level = [&](double base) {
                return static_cast<std::uint8_t>(
                    std::clamp(base + common + tint(random), 0.0, 255.0));
            };
            p[0] = level(150 - (y - top) * 0.1);
            p[1] = level(110 + (y - top) * 0.12);
            p[2] = level(120 + x * 0.06);
        }
    }
}

void drawText(std::uint8_t* pixels, int rowBytes) {
    Pen pen(pixels, rowBytes);
    statusAndTitle(pen, kLight);
    article(pen, kLight, messageRows(pen, kLight, 470, 4) + 40);
}

void drawPhoto(std::uint8_t* pixels, int rowBytes) {
    {
        Pen pen(pixels, rowBytes);
        statusAndTitle(pen, kLight);
        messageRows(pen, kLight, 470, 6);
        keyboard(pen, kLight, 2270);
        pen.flush();
    }
    photo(pixels, rowBytes, 1690, 560);
}

void drawDark(std::uint8_t* pixels, int rowBytes) {
    Pen pen(pixels, rowBytes);
    statusAndTitle(pen, kDark);
    messageRows(pen, kDark, 470, 8);
    keyboard(pen, kDark, 2100);
}

}  // namespace

const PixelBuffer& frame(std::size_t index) {
    static const std::array<PixelBuffer, 3> frames{
        PixelBuffer::make(kFrameWidth, kFrameHeight, drawText),
        PixelBuffer::make(kFrameWidth, kFrameHeight, drawPhoto),
        PixelBuffer::make(kFrameWidth, kFrameHeight, drawDark),
    };
    return frames.at(index);
}

}  // namespace tandrel::bench
