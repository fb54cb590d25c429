#pragma once

#include "platform/text_recognizer.h"

namespace tandrel {

// CONTRACT SKETCH: the screen room fills this in.
// What `recognizer` reads, records in reading order: by y, equal y by x, else as they came.
Result<ReadText> readText(TextRecognizer& recognizer, const PixelBuffer& image);
// The records alone; an error is an empty list.
std::vector<TextRecord> recognize(TextRecognizer& recognizer, const PixelBuffer& image);
// {"text", "conf", "x", "y", "w", "h"}
Json toJson(const TextRecord& record);

}  // namespace tandrel
