#pragma once

#include <string>

#include "base/pixel_buffer.h"

using cairo_t = struct _cairo;
using cairo_surface_t = struct _cairo_surface;

namespace tandrel {

struct Colour {
    double red = 0;
    double green = 0;
    double blue = 0;
};

inline constexpr Colour kBlack{0, 0, 0};
inline constexpr Colour kWhite{1, 1, 1};

struct DrawnStyle {
    std::string font = "Inter";  // a Pango font description without the size
    double points = 17;
    Colour colour = kBlack;
};

// A frame to draw on, in points of `density` pixels each.
class DrawnFrame {
 public:
    DrawnFrame(int widthPixels, int heightPixels, int density, Colour paper);
    ~DrawnFrame();
    DrawnFrame(const DrawnFrame&) = delete;
    DrawnFrame& operator=(const DrawnFrame&) = delete;

    // Text with the left end of its baseline at (x, y); returns the width of its ink in points.
    double text(double x, double y, const std::string& words, const DrawnStyle& style = {});
    // The width that `text` would return.
    double width(const std::string& words, const DrawnStyle& style) const;
    void rectangle(double x, double y, double width, double height, double radius, Colour fill);
    void outline(double x, double y, double width, double height, double radius, Colour line);
    void line(double x0, double y0, double x1, double y1, double thickness, Colour colour);
    void disc(double x, double y, double radius, Colour fill);
    // For what else is to be drawn.
    cairo_t* canvas() { return cairo_; }

    PixelBuffer frame() const;

 private:
    void path(double x, double y, double width, double height, double radius);
    cairo_surface_t* const pixels_;
    cairo_t* const cairo_;
};

}  // namespace tandrel
