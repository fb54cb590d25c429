#pragma once

#include <deque>
#include <memory>
#include <optional>
#include <vector>

#include "base/clock.h"
#include "platform/text_recognizer.h"
#include "reading/line_finder.h"
#include "reading/line_reading.h"

namespace tandrel {

// Reads a frame: finds its lines, has each one read that is not in memory, and reports as unread
// what time did not suffice for.
class FrameReader : public TextRecognizer {
 public:
    // No frame takes longer than two seconds; what is not read when this much has passed is
    // reported. A program whose threads are watched takes tens of times as long.
#ifdef __SANITIZE_THREAD__
    static constexpr Duration kTimeToRead = std::chrono::seconds(60);
#else
    static constexpr Duration kTimeToRead = std::chrono::milliseconds(1500);
#endif

    // `clock` must outlive the reader.
    FrameReader(std::unique_ptr<StripReader> strips, Clock& clock);
    ~FrameReader() override;

    Result<ReadText> read(const PixelBuffer& image) override;

 private:
    struct SeenFrame;
    using Seen = std::unique_ptr<SeenFrame>;

    // The text of the same picture if it was read before.
    std::optional<ReadText> findText(const std::vector<RowSum>& rows);
    // The frame that is most like the picture, taken out of memory; a new one if none is.
    Seen takeLike(const PixelBuffer& image, const std::vector<RowSum>& rows);
    void giveBack(Seen frame);
    Result<ReadText> readLines(const GrayFrame& frame, const std::vector<TextLine>& lines,
                               TimePoint deadline);

    const std::unique_ptr<StripReader> strips_;
    Clock& clock_;
    StripMemory memory_;
    Mutex mutex_;
    std::deque<Seen> frames_ OWNED_BY(mutex_);  // the latest first
    SharedWork work_{"tandrel.reading"};
};

}  // namespace tandrel
