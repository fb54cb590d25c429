#pragma once

#include <string_view>

#include <cairo.h>

#include "platform/virtual/geometry.h"

namespace tandrel {

// A small symbol drawn from lines, as it stands on icons and rows.
//
// `path` is a list of commands in a square of 24 units: "M x y" moves, "L x y" draws a line,
// "C x1 y1 x2 y2 x y" a curve, "Z" closes, "O x y r" adds a circle, "R x y w h r" a rounded box;
// "F" fills what was drawn so far, "E" fills it leaving out what overlaps, "S w" strokes it with a
// line of width w.
struct Glyph {
    std::string_view name;
    std::string_view path;
};

// None when no glyph has the name.
const Glyph* findGlyph(std::string_view name);

// Draws the glyph in one color to fill `place`, keeping it square.
void drawGlyph(cairo_t* cairo, const Glyph& glyph, const Rect& place, const Color& color);

}  // namespace tandrel
