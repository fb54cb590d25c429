#include "reading/line_finder.h"

#include "reading/components.h"
#include "reading/contrast_cells.h"
#include "reading/line_joiner.h"
#include "reading/line_trimmer.h"
#include "reading/picture_text.h"

namespace tandrel {

namespace {

// All lengths are in cells of about one point.
constexpr int kTallestGlyph = 110;
constexpr int kShortestLine = 5;
// Grey levels between ink and paper.
constexpr int kEdgeContrast = 30;

// A rule between rows, a thin vertical line, a speck, or something too tall for a line of text.
bool isNoGlyph(const Component& part) {
    const int width = part.box.width(), height = part.box.height();
    if (height <= 3 && width > (height <= 2 ? 16 : 26)) return true;
    if (width <= 2 && height > 24) return true;
    return height > kTallestGlyph || part.area < 4;
}

// The frame of a card, field or button: large, drawn with a thin stroke, empty in the middle.
// Letters of that size have thicker strokes or something in the middle.
bool isOutline(const Component& part) {
    const int width = part.box.width(), height = part.box.height();
    if (width < 20 || height < 18 || part.area * 3 >= width * height) return false;
    const bool isThin = part.area * 10 < 2 * (width + height) * 38;
    return isThin && part.centre * 200 <= width * height;
}

// A large letter drawn thick shows only its contour too, but its stroke, seen from the left at half
// height, is as thick as strokes of letters are; the line around a field is thinner, the plate of a
// button wider.
bool hasLetterStroke(const GrayFrame& frame, const PixelBox& box) {
    if (box.width() * 10 > box.height() * 14) return false;
    const std::uint8_t* row = frame.row((box.top + box.bottom) / 2);
    const int paper = row[box.left];
    auto isPaper = [&](int x) { return std::abs(row[x] - paper) < kEdgeContrast / 2; };
    int begin = box.left;
    while (begin < box.right && isPaper(begin)) ++begin;
    int end = begin;
    while (end < box.right && !isPaper(end)) ++end;
    const int thickness = (end - begin) * 100;
    return thickness >= 7 * box.height() && thickness <= 28 * box.height();
}

PixelBox inPixels(const PixelBox& cells, int scale, const GrayFrame& frame) {
    // A cell is marked for an edge in it or in the next one, so a box reaches one cell further.
    return {cells.left * scale, cells.top * scale,
            std::min((cells.right + 1) * scale, frame.width()),
            std::min((cells.bottom + 1) * scale, frame.height())};
}

bool isLineShaped(const PixelBox& line) {
    return line.height() >= kShortestLine && line.width() * 5 >= line.height();
}

}  // namespace

std::vector<TextLine> findLines(const GrayFrame& frame) {
    const ContrastCells cells = markContrast(frame);
    std::vector<PixelBox> parts, pictures;
    for (const Component& part :
         connectedComponents(cells.marked.data(), cells.columns, cells.rows)) {
        if (part.box.height() > kTallestGlyph) {
            pictures.push_back(inPixels(part.box, cells.cellPixels, frame));
        } else if (!isNoGlyph(part) &&
                   (!isOutline(part) ||
                    hasLetterStroke(frame, inPixels(part.box, cells.cellPixels, frame)))) {
            parts.push_back(part.box);
        }
    }
    std::vector<TextLine> lines;
    for (const JoinedLine& line : joinIntoLines(std::move(parts), cells.rows)) {
        if (!isLineShaped(line.box)) continue;
        const auto ink = findInk(frame, inPixels(line.box, cells.cellPixels, frame));
        if (!ink) continue;
        for (const Ink& trimmed : withoutIcons(frame, *ink)) lines.push_back({trimmed, false});
    }
    addPictureText(frame, pictures, cells.cellPixels, lines);
    std::ranges::stable_sort(lines, [](const TextLine& a, const TextLine& b) {
        const PixelBox &first = a.ink.box, &second = b.ink.box;
        return first.top != second.top ? first.top < second.top : first.left < second.left;
    });
    return lines;
}

}  // namespace tandrel
