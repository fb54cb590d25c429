#pragma once

#include <deque>
#include <memory>
#include <utility>

#include "base/clock.h"
#include "platform/text_recognizer.h"
#include "reading/line_reading.h"

namespace tandrel {

// Reads a frame: finds its lines, has each one read that is not in memory, and reports as unread
// what time did not suffice for.
class FrameReader : public TextRecognizer {
 public:
    // `clock` must outlive the reader.
    FrameReader(std::unique_ptr<StripReader> strips, Clock& clock);

    Result<ReadText> read(const PixelBuffer& image) override;

 private:
    Result<ReadText> readChanged(const PixelBuffer& image);

    const std::unique_ptr<StripReader> strips_;
    Clock& clock_;
    StripMemory memory_;
    Mutex mutex_;
    // The last frames that were read in full, the latest first.
    std::deque<std::pair<PictureHash, ReadText>> frames_ OWNED_BY(mutex_);
    SharedWork work_{"tandrel.reading"};
};

}  // namespace tandrel
