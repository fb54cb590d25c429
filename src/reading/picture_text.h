#pragma once

#include <vector>

#include "reading/text_line.h"

namespace tandrel {

// The lines of text on an area with a photo, a map or another texture. Text over pictures is drawn
// in one flat colour, nearly white or nearly black, to be legible at all: what is left of the
// picture at such a level are the letters.
std::vector<TextLine> findPictureText(const GrayFrame& frame, const PixelBox& area,
                                      int pixelsPerPoint);

}  // namespace tandrel
