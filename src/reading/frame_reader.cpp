#include "reading/frame_reader.h"

#include <fmt/format.h>

#include "base/unicode.h"
#include "reading/line_finder.h"

namespace tandrel {

namespace {

// No frame takes longer than two seconds; what is not read when this much has passed is reported.
constexpr Duration kTimeToRead = std::chrono::milliseconds(1700);
constexpr std::size_t kStripsPerBatch = 16;
constexpr double kPadding = 0.2;
// Far beyond any screen; more would take too long even to look at.
constexpr std::int64_t kMostPixels = 64'000'000;

TextRecord recordOf(const StripText& read, const PixelBox& box) {
    return {.text = trimmed(read.text),
            .confidence = read.confidence,
            .x = static_cast<double>(box.left),
            .y = static_cast<double>(box.top),
            .width = static_cast<double>(box.width()),
            .height = static_cast<double>(box.height())};
}

UnreadArea unreadAreaOf(const PixelBox& box) {
    return {static_cast<double>(box.left), static_cast<double>(box.top),
            static_cast<double>(box.width()), static_cast<double>(box.height())};
}

}  // namespace

FrameReader::FrameReader(std::unique_ptr<StripReader> strips, Clock& clock)
    : strips_(std::move(strips)), clock_(clock) {}

Result<ReadText> FrameReader::read(const PixelBuffer& image) {
    if (!image) return fail("There is no image to read.");
    if (std::int64_t{image.width()} * image.height() > kMostPixels) {
        return fail(fmt::format("An image of {} x {} pixels is too large to read.", image.width(),
                                image.height()));
    }
    const TimePoint deadline = clock_.now() + kTimeToRead;
    const GrayFrame frame = GrayFrame::from(image);
    std::vector<Ink> lines;
    for (const PixelBox& box : findLines(frame)) {
        if (const auto ink = findInk(frame, box)) lines.push_back(*ink);
    }
    ReadText result;
    for (std::size_t first = 0; first < lines.size(); first += kStripsPerBatch) {
        const std::size_t end = std::min(lines.size(), first + kStripsPerBatch);
        if (clock_.now() >= deadline) {
            for (std::size_t i = first; i < lines.size(); ++i) {
                result.unread.push_back(unreadAreaOf(lines[i].box));
            }
            break;
        }
        std::vector<Strip> strips;
        for (std::size_t i = first; i < end; ++i) {
            strips.push_back(makeStrip(frame, lines[i], kPadding));
        }
        const auto texts = TRY(strips_->read(strips));
        for (std::size_t i = first; i < end; ++i) {
            TextRecord record = recordOf(texts[i - first], lines[i].box);
            if (!record.text.empty()) result.records.push_back(std::move(record));
        }
    }
    return result;
}

}  // namespace tandrel
