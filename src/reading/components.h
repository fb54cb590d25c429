#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "reading/pixel_box.h"

namespace tandrel {

// A set of marked cells that touch each other, also at corners.
struct Component {
    PixelBox box;  // in cells
    int area = 0;
    int centre = 0;  // marked cells in the box's middle: the inner 40 % across and 30 % down
};

// The components of a mask of `columns` x `rows` bytes, each 0 or 1.
std::vector<Component> connectedComponents(const std::uint8_t* mask, int columns, int rows);

// Groups of indices that were joined pairwise.
class JoinedGroups {
 public:
    explicit JoinedGroups(int count);
    int groupOf(int index);
    void join(int first, int second);
    int add();

 private:
    std::vector<int> parents_;
};

}  // namespace tandrel
