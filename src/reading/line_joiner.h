#pragma once

#include <vector>

#include "reading/components.h"

namespace tandrel {

// Several parts that belong to one line.
struct JoinedLine {
    PixelBox box;
    std::vector<PixelBox> parts;
};

// Joins parts beside each other into lines. All lengths are in cells of about one point; `rows` is
// the number of rows of cells.
std::vector<JoinedLine> joinIntoLines(std::vector<PixelBox> parts, int rows);

}  // namespace tandrel
