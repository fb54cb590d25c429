#include "reading/frame_reader.h"

#include <algorithm>
#include <cmath>

#include <fmt/format.h>

#include "reading/text_marks.h"

namespace tandrel {

namespace {

// As many phones as may show a still picture at the same time.
constexpr std::size_t kMostFrames = 4;
// A screen has 2 to 4 million.
constexpr std::int64_t kMostPixelsKept = 8'000'000;
// Below this nearly everything is an icon or a texture; figures are kept however unsure, so that
// nothing that may be an amount is lost.
constexpr double kLeastConfidence = 0.3;
// Leaves and waves now and then look like letters, but rarely like letters that the network is sure
// of.
constexpr double kLeastConfidenceOnPicture = 0.8;
constexpr double kSureLine = 0.5;
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
    if (line.onPicture && !holdsAmount(record.text)) {
        return record.confidence >= kLeastConfidenceOnPicture;
    }
    return record.confidence >= kLeastConfidence || holdsFigures(record.text);
}

PixelBox boxOf(const TextRecord& record) {
    return {static_cast<int>(record.x), static_cast<int>(record.y),
            static_cast<int>(record.x + record.width), static_cast<int>(record.y + record.height)};
}

// On pictures a line is often found both whole and in parts. Parts of what was read as a whole are
// no records of their own, but figures are only left out for figures.
bool isPartOf(const TextRecord& part, const TextRecord& whole) {
    if (part.text.size() >= whole.text.size()) return false;
    if (holdsFigures(part.text) && !holdsFigures(whole.text)) return false;
    const PixelBox box = boxOf(part), around = boxOf(whole);
    const PixelBox shared = box.intersected(around);
    return !shared.empty() && around.height() < 2 * box.height() &&
           std::int64_t{3} * shared.width() * shared.height() >
               std::int64_t{2} * box.width() * box.height();
}

void leaveOutParts(std::vector<TextRecord>& records, const std::vector<TextRecord>& wholes) {
    std::erase_if(records, [&](const TextRecord& record) {
        return std::ranges::any_of(wholes,
                                   [&](const auto& whole) { return isPartOf(record, whole); });
    });
}

// What lies around several lines is no line, whatever the picture beneath it reads like.
void leaveOutSurroundings(std::vector<TextRecord>& records) {
    const auto all = records;
    std::erase_if(records, [&](const TextRecord& record) {
        const PixelBox around = boxOf(record);
        return std::ranges::count_if(all, [&](const TextRecord& other) {
                   return other.height * 2 < record.height && other.confidence >= kSureLine &&
                          around.contains(boxOf(other));
               }) >= 2;
    });
}

UnreadArea unreadAreaOf(const PixelBox& box) {
    return {static_cast<double>(box.left), static_cast<double>(box.top),
            static_cast<double>(box.width()), static_cast<double>(box.height())};
}

ChangedRows changedRows(const std::vector<RowSum>& before, const std::vector<RowSum>& now) {
    std::vector<bool> changed(now.size(), true);
    for (std::size_t y = 0; y < std::min(before.size(), now.size()); ++y) {
        changed[y] = before[y] != now[y];
    }
    return ChangedRows(changed);
}

}  // namespace

// A frame that was read lately, with all that helps to read the next one of the same phone.
struct FrameReader::SeenFrame {
    SeenFrame(int width, int height) : gray(width, height), finder(width, height) {}

    std::vector<RowSum> rows;  // empty until something was read
    GrayFrame gray;
    LineFinder finder;
    std::optional<ReadText> text;  // none if some of it was not read
};

FrameReader::FrameReader(std::unique_ptr<StripReader> strips, Clock& clock)
    : strips_(std::move(strips)), clock_(clock) {}

FrameReader::~FrameReader() = default;

Result<ReadText> FrameReader::read(const PixelBuffer& image) {
    if (!image) return fail("There is no image to read.");
    if (std::int64_t{image.width()} * image.height() > kMostPixels) {
        return fail(fmt::format("An image of {} x {} pixels is too large to read.", image.width(),
                                image.height()));
    }
    const TimePoint deadline = clock_.now() + kTimeToRead;
    auto rows = rowSumsOf(image);
    if (auto known = findText(rows)) return *std::move(known);
    Seen seen = takeLike(image, rows);
    const ChangedRows changed = changedRows(seen->rows, rows);
    seen->gray.update(image, changed);
    const auto lines = seen->finder.find(seen->gray, changed);
    seen->rows = std::move(rows);
    auto text = readLines(seen->gray, lines, deadline);
    seen->text.reset();
    if (text && text->unread.empty()) seen->text = *text;
    giveBack(std::move(seen));
    return text;
}

std::optional<ReadText> FrameReader::findText(const std::vector<RowSum>& rows) {
    MutexLock lock(mutex_);
    for (const Seen& frame : frames_) {
        if (frame->text && frame->rows == rows) return frame->text;
    }
    return std::nullopt;
}

FrameReader::Seen FrameReader::takeLike(const PixelBuffer& image, const std::vector<RowSum>& rows) {
    MutexLock lock(mutex_);
    auto most = frames_.end();
    // Less than this in common, and it may be another phone's frame, which is worth keeping.
    auto mostAlike = static_cast<std::ptrdiff_t>(rows.size() / 4);
    for (auto at = frames_.begin(); at != frames_.end(); ++at) {
        const SeenFrame& frame = **at;
        if (frame.gray.width() != image.width() || frame.rows.size() != rows.size()) continue;
        std::ptrdiff_t alike = 0;
        for (std::size_t y = 0; y < rows.size(); ++y) alike += frame.rows[y] == rows[y];
        if (alike <= mostAlike) continue;
        mostAlike = alike;
        most = at;
    }
    if (most == frames_.end()) return std::make_unique<SeenFrame>(image.width(), image.height());
    Seen frame = std::move(*most);
    frames_.erase(most);
    return frame;
}

void FrameReader::giveBack(Seen frame) {
    // Frames far larger than a screen are not worth their memory.
    if (std::int64_t{frame->gray.width()} * frame->gray.height() > kMostPixelsKept) return;
    MutexLock lock(mutex_);
    frames_.push_front(std::move(frame));
    if (frames_.size() > kMostFrames) frames_.pop_back();
}

Result<ReadText> FrameReader::readLines(const GrayFrame& frame, const std::vector<TextLine>& lines,
                                        TimePoint deadline) {
    std::vector<Ink> inks;
    for (const TextLine& line : lines) inks.push_back(line.ink);
    LineReader reader(*strips_, memory_, work_, clock_);
    const auto readings = TRY(reader.read(frame, inks, deadline));
    ReadText result;
    std::vector<TextRecord> onPictures;
    for (std::size_t i = 0; i < lines.size(); ++i) {
        if (!readings[i].wasRead) {
            result.unread.push_back(unreadAreaOf(inks[i].box));
            continue;
        }
        TextRecord record = recordOf(readings[i].text, inks[i].box);
        // On a picture some of an amount may be lost to what is beneath.
        if (lines[i].onPicture && holdsAmount(record.text)) {
            record.confidence = std::min(record.confidence, LineReader::kDoubt);
        }
        if (!isWorthTelling(record, lines[i])) continue;
        if (lines[i].onPicture) onPictures.push_back(record);
        result.records.push_back(std::move(record));
    }
    leaveOutParts(result.records, onPictures);
    leaveOutSurroundings(result.records);
    return result;
}

}  // namespace tandrel
