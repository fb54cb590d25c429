#pragma once

#include <memory>

#include "base/clock.h"
#include "platform/text_recognizer.h"
#include "reading/strip_reader.h"

namespace tandrel {

// Reads a frame: finds its lines, makes a strip of each and has the strips recognised.
class FrameReader : public TextRecognizer {
 public:
    FrameReader(std::unique_ptr<StripReader> strips, Clock& clock);

    Result<ReadText> read(const PixelBuffer& image) override;

 private:
    const std::unique_ptr<StripReader> strips_;
    Clock& clock_;
};

}  // namespace tandrel
