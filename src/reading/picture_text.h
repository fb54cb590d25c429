#pragma once

#include <vector>

#include "reading/text_line.h"

namespace tandrel {

// The lines of text on an area with a photo, a map or another texture. Text over pictures is drawn
// in one flat colour to be legible at all: what is left of the picture at the level of white or of
// black are letters, and so is what is thin and stands out from all around it.
std::vector<TextLine> findPictureText(const GrayFrame& frame, const PixelBox& area,
                                      int pixelsPerPoint);

}  // namespace tandrel
