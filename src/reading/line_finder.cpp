#include "reading/line_finder.h"

#include <algorithm>
#include <cstdlib>
#include <span>

#include "reading/components.h"
#include "reading/line_joiner.h"
#include "reading/line_rows.h"
#include "reading/line_trimmer.h"
#include "reading/picture_text.h"

namespace tandrel {

namespace {

// All lengths are in cells of about one point.
constexpr int kTallestGlyph = 110;
constexpr int kShortestLine = 5;

// A rule between rows, a thin vertical line, a speck, or something too tall for a line of text.
bool isNoGlyph(const Component& part) {
    const int width = part.box.width(), height = part.box.height();
    if (height <= 3 && width > (height <= 2 ? 16 : 26)) return true;
    if (width <= 2 && height > 24) return true;
    // A line drawn across a picture; what shows of a letter of that size is its whole contour.
    if (height >= 18 && part.area * 10 < width * height) return true;
    return height > kTallestGlyph || part.area < 4;
}

// A chart or a photo: letters that touch are wide, but not where they are as large.
bool isWideAsAPicture(const PixelBox& box) {
    return box.height() > 48 && box.width() > 2 * box.height();
}

// The border of a card or a sheet, with nothing of its own inside.
bool isCardBorder(const Component& part) {
    return part.area < 3 * 2 * (part.box.width() + part.box.height()) && part.centre == 0;
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
// button wider. Two letters that touch are wider than one, and bold.
bool hasLetterStroke(const GrayFrame& frame, const PixelBox& box) {
    constexpr int kLeastStroke = 7, kBoldStroke = 12, kThickestStroke = 28;  // % of the height
    if (box.width() * 10 > box.height() * 24) return false;
    const bool isPair = box.width() * 10 > box.height() * 14;
    const std::uint8_t* row = frame.row((box.top + box.bottom) / 2);
    const int paper = row[box.left];
    auto isPaper = [&](int x) { return std::abs(row[x] - paper) < kEdgeContrast / 2; };
    int begin = box.left;
    while (begin < box.right && isPaper(begin)) ++begin;
    int end = begin;
    while (end < box.right && !isPaper(end)) ++end;
    const int thickness = (end - begin) * 100;
    return thickness >= (isPair ? kBoldStroke : kLeastStroke) * box.height() &&
           thickness <= kThickestStroke * box.height();
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

// Parts are words or letters, about as high as the line that they make.
bool mayHoldRows(const JoinedLine& line) {
    std::vector<int> heights;
    for (const PixelBox& part : line.parts) heights.push_back(part.height());
    const auto middle = heights.begin() + static_cast<std::ptrdiff_t>(heights.size() / 2);
    std::ranges::nth_element(heights, middle);
    return line.box.height() * 10 >= *middle * 16;
}

std::vector<TextLine> linesIn(const GrayFrame& frame, const PixelBox& area, bool hasRows) {
    std::vector<TextLine> lines;
    if (const auto ink = findInk(frame, area)) {
        for (const Ink& row : hasRows ? rowsOf(frame, *ink) : std::vector{*ink}) {
            for (const Ink& trimmed : withoutIcons(frame, row)) lines.push_back({trimmed, false});
        }
    }
    return lines;
}

// The areas that lie in no other one.
std::vector<PixelBox> outermost(std::vector<PixelBox> areas) {
    std::ranges::sort(areas, std::ranges::greater{},
                      [](const PixelBox& box) { return std::int64_t{box.width()} * box.height(); });
    std::vector<PixelBox> result;
    for (const PixelBox& area : areas) {
        if (std::ranges::none_of(result, [&](const auto& box) { return box.contains(area); })) {
            result.push_back(area);
        }
    }
    return result;
}

std::uint64_t keyOf(const PixelBox& area) {
    return static_cast<std::uint64_t>(area.top) << 32 | static_cast<std::uint32_t>(area.left);
}

// Two findings of the same text are one; the first counts. What lies within something much larger
// is no part of it.
bool isKnown(const TextLine& line, std::span<const TextLine> lines) {
    return std::ranges::any_of(lines, [&](const TextLine& other) {
        const PixelBox &box = line.ink.box, &known = other.ink.box;
        if (known.height() > 2 * box.height()) return false;
        const PixelBox shared = box.intersected(known);
        return !shared.empty() && std::int64_t{2} * shared.width() * shared.height() >
                                      std::int64_t{box.width()} * box.height();
    });
}

}  // namespace

template <typename Find>
const std::vector<TextLine>& LineFinder::findIn(const PixelBox& area, const ChangedRows& changed,
                                                Memory& before, Memory& now, Find&& find) {
    Found& found = now[keyOf(area)];
    const auto old = before.find(keyOf(area));
    if (old != before.end() && old->second.area == area && !changed.any(area.top, area.bottom)) {
        found = std::move(old->second);
        before.erase(old);
    } else {
        found = {area, find()};
    }
    return found.lines;
}

std::vector<TextLine> LineFinder::find(const GrayFrame& frame, const ChangedRows& changed) {
    cells_.update(frame, changed);
    const int scale = cells_.cellPixels();
    std::vector<PixelBox> parts, pictures;
    for (const Component& part :
         connectedComponents(cells_.marked(), cells_.columns(), cells_.rows())) {
        const PixelBox pixels = inPixels(part.box, scale, frame);
        if (part.box.height() > kTallestGlyph || isWideAsAPicture(part.box)) {
            if (!isCardBorder(part)) pictures.push_back(pixels);
        } else if (!isNoGlyph(part) && (!isOutline(part) || hasLetterStroke(frame, pixels))) {
            parts.push_back(part.box);
        }
    }
    std::vector<TextLine> lines;
    Memory newLines, newPictures;
    for (const JoinedLine& line : joinIntoLines(std::move(parts), cells_.rows())) {
        if (!isLineShaped(line.box)) continue;
        const PixelBox area = inPixels(line.box, scale, frame);
        const auto& found = findIn(area, changed, lines_, newLines,
                                   [&] { return linesIn(frame, area, mayHoldRows(line)); });
        lines.insert(lines.end(), found.begin(), found.end());
    }
    for (const PixelBox& picture : outermost(std::move(pictures))) {
        const auto& found = findIn(picture, changed, pictures_, newPictures,
                                   [&] { return findPictureText(frame, picture, scale); });
        for (const TextLine& line : found) {
            if (!isKnown(line, lines)) lines.push_back(line);
        }
    }
    lines_ = std::move(newLines);
    pictures_ = std::move(newPictures);
    std::ranges::stable_sort(lines, [](const TextLine& a, const TextLine& b) {
        const PixelBox &first = a.ink.box, &second = b.ink.box;
        return first.top != second.top ? first.top < second.top : first.left < second.left;
    });
    return lines;
}

std::vector<TextLine> findLines(const GrayFrame& frame) {
    return LineFinder(frame.width(), frame.height()).find(frame, ChangedRows::all(frame.height()));
}

}  // namespace tandrel
