#include "reading/picture_text.h"

#include <algorithm>

#include "reading/line_joiner.h"
#include "reading/local_contrast.h"

namespace tandrel {

namespace {

constexpr int kNearlyWhite = 228;
constexpr int kNearlyBlack = 60;
// From this distance to the letters' level on a pixel is paper.
constexpr int kSoftEdge = 80;
// In points.
constexpr int kShortestLetter = 4;
constexpr int kTallestLetter = 60;
constexpr std::size_t kLeastLetters = 3;
constexpr int kThickestStroke = 4;
constexpr int kLeastLocalContrast = 50;
// A texture of more specks than this has no text to be found.
constexpr std::size_t kMostParts = 20000;

std::vector<std::uint8_t> maskOf(const GrayFrame& frame, const PixelBox& area, InkLevel level) {
    std::vector<std::uint8_t> mask(static_cast<std::size_t>(area.width()) * area.height());
    std::uint8_t* to = mask.data();
    for (int y = area.top; y < area.bottom; ++y, to += area.width()) {
        const std::uint8_t* row = frame.row(y) + area.left;
        for (int x = 0; x < area.width(); ++x) {
            to[x] = level == InkLevel::kBright ? row[x] >= kNearlyWhite : row[x] <= kNearlyBlack;
        }
    }
    return mask;
}

// Letters of one line are of about one height: small ones, tall ones and few others.
bool isTextLike(const JoinedLine& line) {
    if (line.parts.size() < kLeastLetters) return false;
    std::vector<int> heights;
    for (const PixelBox& part : line.parts) heights.push_back(part.height());
    std::ranges::sort(heights);
    const int middle = heights[heights.size() / 2];
    const auto similar = std::ranges::count_if(
        heights, [&](int height) { return height * 3 >= middle * 2 && height * 2 <= middle * 3; });
    return static_cast<std::size_t>(similar) * 3 >= heights.size() * 2 &&
           line.box.width() >= line.box.height() && line.box.height() <= 3 * middle;
}

// A mask of ink on an area, `pixels` pixels of the frame to a mark.
struct InkMask {
    const std::uint8_t* marks;
    int columns;
    int rows;
    int pixels;
};

// The boxes of the lines of text on a mask, in pixels of the frame from the area's corner.
std::vector<PixelBox> textBoxes(const InkMask& mask, int pixelsPerPoint) {
    std::vector<PixelBox> parts;
    for (const Component& part : connectedComponents(mask.marks, mask.columns, mask.rows)) {
        const int height = part.box.height() * mask.pixels;
        const int width = part.box.width() * mask.pixels;
        if (height < kShortestLetter * pixelsPerPoint / 2 ||
            height > kTallestLetter * pixelsPerPoint || width > 2 * height + 6) {
            continue;
        }
        // The joiner thinks in points.
        const auto inPoints = [&](int length) { return length * mask.pixels / pixelsPerPoint; };
        parts.push_back({inPoints(part.box.left), inPoints(part.box.top),
                         inPoints(part.box.right) + 1, inPoints(part.box.bottom) + 1});
    }
    if (parts.size() > kMostParts) return {};
    std::vector<PixelBox> boxes;
    const int rows = mask.rows * mask.pixels / pixelsPerPoint + 1;
    for (const JoinedLine& line : joinIntoLines(std::move(parts), rows)) {
        if (!isTextLike(line)) continue;
        boxes.push_back({line.box.left * pixelsPerPoint, line.box.top * pixelsPerPoint,
                         line.box.right * pixelsPerPoint, line.box.bottom * pixelsPerPoint});
    }
    return boxes;
}

PixelBox onFrame(const PixelBox& box, const PixelBox& area) {
    return PixelBox{area.left + box.left, area.top + box.top, area.left + box.right,
                    area.top + box.bottom}
        .intersected(area);
}

void addAtLevel(const GrayFrame& frame, const PixelBox& area, InkLevel level, int pixelsPerPoint,
                std::vector<TextLine>& lines) {
    const auto marks = maskOf(frame, area, level);
    const bool bright = level == InkLevel::kBright;
    for (const PixelBox& found :
         textBoxes({marks.data(), area.width(), area.height(), 1}, pixelsPerPoint)) {
        const PixelBox box = onFrame(found, area);
        if (box.empty()) continue;
        const int ink = bright ? 255 : kNearlyBlack / 2;
        lines.push_back({{box, bright ? ink - kSoftEdge : ink + kSoftEdge, ink}, true});
    }
}

int medianOf(std::vector<std::uint8_t>& values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
}

// Letters of any brightness that stand out from what is right around them, as labels on maps do.
void addByContrast(const GrayFrame& frame, const PixelBox& area, InkLevel level, int pixelsPerPoint,
                   std::vector<TextLine>& lines) {
    const int pixels = pixelsPerPoint > 2 ? 2 : 1;
    const int reach = kThickestStroke * pixelsPerPoint / pixels / 2 + 1;
    const LocalContrast contrast = localContrast(frame, area, level, pixels, reach);
    std::vector<std::uint8_t> marks(contrast.values.size());
    for (std::size_t i = 0; i < marks.size(); ++i) {
        marks[i] = contrast.values[i] >= kLeastLocalContrast;
    }
    for (const PixelBox& found :
         textBoxes({marks.data(), contrast.columns, contrast.rows, pixels}, pixelsPerPoint)) {
        const PixelBox box = onFrame(found, area);
        if (box.empty()) continue;
        std::vector<std::uint8_t> levels, contrasts;
        for (int y = box.top - area.top; y < box.bottom - area.top; y += pixels) {
            for (int x = box.left - area.left; x < box.right - area.left; x += pixels) {
                const int column = x / pixels, row = y / pixels;
                if (column >= contrast.columns || row >= contrast.rows) continue;
                const std::size_t at = static_cast<std::size_t>(row) * contrast.columns + column;
                if (!marks[at]) continue;
                levels.push_back(frame.row(area.top + row * pixels)[area.left + column * pixels]);
                contrasts.push_back(contrast.values[at]);
            }
        }
        if (levels.empty()) continue;
        const int ink = medianOf(levels), difference = medianOf(contrasts);
        const int paper = level == InkLevel::kBright ? ink - difference : ink + difference;
        lines.push_back({{box, std::clamp(paper, 0, 255), ink}, true});
    }
}

}  // namespace

std::vector<TextLine> findPictureText(const GrayFrame& frame, const PixelBox& area,
                                      int pixelsPerPoint) {
    std::vector<TextLine> lines;
    addAtLevel(frame, area, InkLevel::kBright, pixelsPerPoint, lines);
    addAtLevel(frame, area, InkLevel::kDark, pixelsPerPoint, lines);
    addByContrast(frame, area, InkLevel::kBright, pixelsPerPoint, lines);
    addByContrast(frame, area, InkLevel::kDark, pixelsPerPoint, lines);
    return lines;
}

}  // namespace tandrel
