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
    bool isOptional = false;  // counts neither as a line when missed nor as junk when read
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

// What drawn frames are for: rules are tuned on the ones; the others, in fonts of their own, show
// whether the rules hold elsewhere.
enum class DrawnUse { kTuning, kHeldBack };

// Frames drawn here, different ones for each use.
FrameSet drawScreens(int count, DrawnUse use);
FrameSet drawAmounts(int count, DrawnUse use);

// What the virtual phone shows: each page of its scenarios.
FrameSet drawPhonePages(const std::string& folder);

}  // namespace tandrel
