#pragma once

#include <cairo.h>

#include "platform/virtual/display_list.h"
#include "platform/virtual/fonts.h"

namespace tandrel {

// Draws the list as a screen of `width` x `height` points, the content moved up by `scroll` points.
// The context's units are points.
void drawDisplayList(cairo_t* cairo, Fonts& fonts, const DisplayList& list, double width,
                     double height, double scroll);

// Draws AssistiveTouch's pointer: a translucent grey disc with a ring, made to stand out on any
// ground from black to white.
void drawPointer(cairo_t* cairo, Point center);

// The pointer's outer radius in points.
inline constexpr double kPointerRadius = 11;

}  // namespace tandrel
