#pragma once

#include <string>
#include <vector>

#include "base/pixel_buffer.h"
#include "base/result.h"

// The system's text recognition.
namespace tandrel {

// One recognised line; the box in whole image pixels, origin top left.
struct TextRecord {
    std::string text;
    double confidence = 0;  // 0 to 1
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const TextRecord&) const = default;
};

// An area of the image, in pixels, in which there may be text that was not read.
struct UnreadArea {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const UnreadArea&) const = default;
};

struct ReadText {
    std::vector<TextRecord> records;
    std::vector<UnreadArea> unread;
};

class TextRecognizer {
 public:
    virtual ~TextRecognizer() = default;
    // Reads the text of one image. Slow (tens to hundreds of milliseconds), on the caller's thread;
    // any number of threads at once. An error means that nothing is known about the image's text.
    virtual Result<ReadText> read(const PixelBuffer& image) = 0;
};

}  // namespace tandrel
