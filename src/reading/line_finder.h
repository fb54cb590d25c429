#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "reading/contrast_cells.h"
#include "reading/text_line.h"

namespace tandrel {

// Finds lines on frames of one size and remembers how the last one looked, so that what did not
// change is not measured again; the lines are the same as without memory. One thread.
class LineFinder {
 public:
    LineFinder(int width, int height) : cells_(width, height) {}

    // The lines of a frame by top edge, then left edge, when `changed` rows differ from the last
    // frame. Columns and labels beside each other come as lines of their own, icons beside a text
    // are left out where their shape gives them away.
    std::vector<TextLine> find(const GrayFrame& frame, const ChangedRows& changed);

 private:
    // What was found in an area of the last frame.
    struct Found {
        PixelBox area;
        std::vector<TextLine> lines;
    };
    // By the area's top left corner.
    using Memory = std::unordered_map<std::uint64_t, Found>;

    template <typename Find>
    static const std::vector<TextLine>& findIn(const PixelBox& area, const ChangedRows& changed,
                                               Memory& before, Memory& now, Find&& find);

    ContrastCells cells_;
    Memory lines_;
    Memory pictures_;
};

// The lines of one frame.
std::vector<TextLine> findLines(const GrayFrame& frame);

}  // namespace tandrel
