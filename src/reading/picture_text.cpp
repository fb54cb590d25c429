#include "reading/picture_text.h"

#include <algorithm>

#include "reading/line_joiner.h"

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
// A texture of more specks than this has no text to be found.
constexpr std::size_t kMostParts = 20000;

enum class Level { kWhite, kBlack };

std::vector<std::uint8_t> maskOf(const GrayFrame& frame, const PixelBox& area, Level level) {
    std::vector<std::uint8_t> mask(static_cast<std::size_t>(area.width()) * area.height());
    std::uint8_t* to = mask.data();
    for (int y = area.top; y < area.bottom; ++y, to += area.width()) {
        const std::uint8_t* row = frame.row(y) + area.left;
        for (int x = 0; x < area.width(); ++x) {
            to[x] = level == Level::kWhite ? row[x] >= kNearlyWhite : row[x] <= kNearlyBlack;
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

void addAtLevel(const GrayFrame& frame, const PixelBox& area, Level level, int pixelsPerPoint,
                std::vector<TextLine>& lines) {
    const auto mask = maskOf(frame, area, level);
    std::vector<PixelBox> parts;
    for (const Component& part : connectedComponents(mask.data(), area.width(), area.height())) {
        const int height = part.box.height();
        if (height < kShortestLetter * pixelsPerPoint / 2 ||
            height > kTallestLetter * pixelsPerPoint || part.box.width() > 2 * height + 6) {
            continue;
        }
        parts.push_back(part.box);
    }
    if (parts.size() > kMostParts) return;
    // The joiner thinks in points.
    for (PixelBox& part : parts) {
        part = {part.left / pixelsPerPoint, part.top / pixelsPerPoint,
                part.right / pixelsPerPoint + 1, part.bottom / pixelsPerPoint + 1};
    }
    const bool white = level == Level::kWhite;
    for (const JoinedLine& line :
         joinIntoLines(std::move(parts), area.height() / pixelsPerPoint + 1)) {
        if (!isTextLike(line)) continue;
        PixelBox box{area.left + line.box.left * pixelsPerPoint,
                     area.top + line.box.top * pixelsPerPoint,
                     area.left + line.box.right * pixelsPerPoint,
                     area.top + line.box.bottom * pixelsPerPoint};
        box = box.intersected(area);
        if (box.empty()) continue;
        const int ink = white ? 255 : kNearlyBlack / 2;
        lines.push_back({{box, white ? ink - kSoftEdge : ink + kSoftEdge, ink}, true});
    }
}

}  // namespace

std::vector<TextLine> findPictureText(const GrayFrame& frame, const PixelBox& area,
                                      int pixelsPerPoint) {
    std::vector<TextLine> lines;
    addAtLevel(frame, area, Level::kWhite, pixelsPerPoint, lines);
    addAtLevel(frame, area, Level::kBlack, pixelsPerPoint, lines);
    return lines;
}

}  // namespace tandrel
