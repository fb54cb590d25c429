#pragma once

#include <vector>

#include "reading/gray_frame.h"

namespace tandrel {

// The boxes of what looks like one line of text each, by top edge, then left edge. A box holds the
// line's ink and a rim of a few pixels of its background. Columns and labels beside each other come
// as lines of their own.
std::vector<PixelBox> findLines(const GrayFrame& frame);

}  // namespace tandrel
