#include "reading/line_rows.h"

#include <algorithm>

#include "reading/components.h"

namespace tandrel {
namespace {

constexpr double kLeastLetter = 0.5;    // of the middle height; smaller parts are marks
constexpr int kLeastRows = 4;           // pixels; less is noise
constexpr std::size_t kLeastOfRow = 3;  // of a row

struct Row {
    PixelBox box;
    std::size_t letters = 0;
};

// Letters of one row share most of the height of the lower one.
std::vector<Row> rowsOfLetters(std::vector<PixelBox> letters) {
    std::ranges::sort(letters, std::ranges::greater{}, &PixelBox::height);
    std::vector<Row> rows;
    for (const PixelBox& letter : letters) {
        const auto row = std::ranges::find_if(rows, [&](const Row& other) {
            return sharedRows(other.box, letter) * 2 > letter.height();
        });
        if (row == rows.end()) {
            rows.push_back({letter, 1});
        } else {
            row->box.include(letter);
            ++row->letters;
        }
    }
    return rows;
}

}  // namespace

std::vector<Ink> rowsOf(const GrayFrame& frame, const Ink& line) {
    const auto mask = inkMask(frame, line);
    std::vector<PixelBox> parts;
    std::vector<int> heights;
    for (const Component& part :
         connectedComponents(mask.data(), line.box.width(), line.box.height())) {
        if (part.box.height() < kLeastRows) continue;
        parts.push_back(part.box);
        heights.push_back(part.box.height());
    }
    if (parts.size() < 2 * kLeastOfRow) return {line};
    std::ranges::sort(heights);
    const int middle = heights[heights.size() / 2];
    if (line.box.height() < 2 * middle) return {line};
    std::erase_if(parts,
                  [&](const PixelBox& part) { return part.height() < kLeastLetter * middle; });
    const auto rows = rowsOfLetters(std::move(parts));
    const auto full =
        std::ranges::count_if(rows, [](const Row& row) { return row.letters >= kLeastOfRow; });
    if (full < 2) return {line};
    std::vector<Ink> lines;
    for (const Row& row : rows) {
        const PixelBox box{row.box.left + line.box.left, row.box.top + line.box.top,
                           row.box.right + line.box.left, row.box.bottom + line.box.top};
        lines.push_back({box, line.paper, line.level});
    }
    return lines;
}

}  // namespace tandrel
