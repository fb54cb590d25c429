#pragma once

#include <span>
#include <vector>

#include "reading/line_finder.h"

namespace tandrel {

// Adds lines of text that lie on the given areas of photos, maps and other textures. Text over
// pictures is drawn in one flat colour, nearly white or nearly black, to be legible at all: what is
// left of the picture at such a level are the letters.
void addPictureText(const GrayFrame& frame, std::span<const PixelBox> pictures, int pixelsPerPoint,
                    std::vector<TextLine>& lines);

}  // namespace tandrel
