#pragma once

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "base/pixel_buffer.h"
#include "reading/pixel_box.h"

namespace tandrel {

// A line of text that a frame is known to show.
struct KnownLine {
    std::string text = {};
    std::optional<PixelBox> box = {};  // of its ink; absent where only the text is known
    bool isAmount = false;
    bool isPayLabel = false;
};

struct KnownFrame {
    std::string name;
    PixelBuffer picture;
    std::vector<KnownLine> lines;
};

struct FrameSet {
    std::string name;
    std::vector<KnownFrame> frames;
};

// The same picture with a row of its text replaced, and scrolled between its bars.
PixelBuffer withOneRowChanged(const PixelBuffer& picture);
PixelBuffer scrolled(const PixelBuffer& picture);

// The screenshots in a folder with an index.json of their lines. Throws nothing: a folder that
// cannot be read is an empty set and a message on standard error.
FrameSet loadScreenshots(const std::string& folder);

// Frames drawn here, different ones for each seed.
FrameSet drawScreens(int count, unsigned seed);
FrameSet drawAmounts(int count, unsigned seed);

}  // namespace tandrel
