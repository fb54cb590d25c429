#pragma once

#include <cstdint>
#include <vector>

#include "reading/gray_frame.h"

namespace tandrel {

// The frame in square cells of about one point, each marked if the brightness varies strongly in it
// and its right, lower and diagonal neighbours. Glyphs become blobs, flat areas stay empty.
class ContrastCells {
 public:
    ContrastCells() = default;
    ContrastCells(int width, int height);

    // Marks the cells that the changed rows of the frame touch anew.
    void update(const GrayFrame& frame, const ChangedRows& changed);

    int cellPixels() const { return cellPixels_; }
    int columns() const { return columns_; }
    int rows() const { return rows_; }
    // One byte a cell, 0 or 1.
    const std::uint8_t* marked() const { return marked_.data(); }

 private:
    void measureRow(const GrayFrame& frame, int row);
    void markRow(int row);
    std::size_t at(int row) const { return static_cast<std::size_t>(row) * columns_; }

    int cellPixels_ = 1;
    int columns_ = 0;
    int rows_ = 0;
    std::vector<std::uint8_t> darkest_;    // pixel of each cell
    std::vector<std::uint8_t> brightest_;  // pixel of each cell
    std::vector<std::uint8_t> marked_;
    std::vector<std::uint8_t> low_;   // scratch: of the columns of one row of cells
    std::vector<std::uint8_t> high_;  // the same
};

// Grey levels between ink and background from which on an edge counts.
inline constexpr int kEdgeContrast = 30;

}  // namespace tandrel
