#pragma once

#include <vector>

#include "reading/gray_frame.h"
#include "reading/ink.h"

namespace tandrel {

// What looks like one line of text.
struct TextLine {
    Ink ink;
    // It lies on a photo or a map, where much looks like text that is none.
    bool onPicture = false;
};

// The lines of a frame by top edge, then left edge. Columns and labels beside each other come as
// lines of their own, icons beside a text are left out where their shape gives them away.
std::vector<TextLine> findLines(const GrayFrame& frame);

}  // namespace tandrel
