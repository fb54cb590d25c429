#include "reading/frame_reader.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "reading/line_finder.h"
#include "reading/text_marks.h"

namespace tandrel {

namespace {

// No frame takes longer than two seconds; what is not read when this much has passed is reported.
constexpr Duration kTimeToRead = std::chrono::milliseconds(1700);
// As many phones as may show a still picture at the same time.
constexpr std::size_t kMostFrames = 4;
// Below this nearly everything is an icon or a texture; figures are kept however unsure, so that
// nothing that may be an amount is lost.
constexpr double kLeastConfidence = 0.3;
// Leaves and waves now and then look like letters, but rarely like letters that the network is sure
// of.
constexpr double kLeastConfidenceOnPicture = 0.8;
// Far beyond any screen; more would take too long even to look at.
constexpr std::int64_t kMostPixels = 64'000'000;

TextRecord recordOf(const StripText& read, const PixelBox& box) {
    const double left = box.left + std::round(box.width() * read.begin);
    const double right = box.left + std::round(box.width() * read.end);
    return {.text = withoutMarks(read.text),
            .confidence = read.confidence,
            .x = left,
            .y = static_cast<double>(box.top),
            .width = std::max(1.0, right - left),
            .height = static_cast<double>(box.height())};
}

bool isWorthTelling(const TextRecord& record, const TextLine& line) {
    if (record.text.empty()) return false;
    if (line.onPicture) return record.confidence >= kLeastConfidenceOnPicture;
    return record.confidence >= kLeastConfidence || holdsFigures(record.text);
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
    const PictureHash hash = hashOf(image);
    {
        MutexLock lock(mutex_);
        for (const auto& [known, text] : frames_) {
            if (known == hash) return text;
        }
    }
    ReadText text = TRY(readChanged(image));
    if (text.unread.empty()) {
        MutexLock lock(mutex_);
        frames_.emplace_front(hash, text);
        if (frames_.size() > kMostFrames) frames_.pop_back();
    }
    return text;
}

Result<ReadText> FrameReader::readChanged(const PixelBuffer& image) {
    const TimePoint deadline = clock_.now() + kTimeToRead;
    const GrayFrame frame = GrayFrame::from(image);
    const std::vector<TextLine> found = findLines(frame);
    std::vector<Ink> lines;
    for (const TextLine& line : found) lines.push_back(line.ink);
    LineReader reader(*strips_, memory_, work_, clock_);
    const auto readings = TRY(reader.read(frame, lines, deadline));
    ReadText result;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!readings[i].wasRead) {
            result.unread.push_back(unreadAreaOf(lines[i].box));
            continue;
        }
        TextRecord record = recordOf(readings[i].text, lines[i].box);
        if (isWorthTelling(record, found[i])) result.records.push_back(std::move(record));
    }
    return result;
}

}  // namespace tandrel
