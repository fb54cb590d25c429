#pragma once

#include <optional>
#include <string>

#include "screen/content_rect.h"
#include "screen/snapshot.h"

namespace tandrel {

// Keeps the phone's place inside a window from jumping between frames: a frame that is dark or has
// dark edges tells less than an earlier one did. Not for several threads at once.
class ContentMemory {
 public:
    // Which way round the phone was last seen, for a frame that does not tell.
    const std::optional<std::string>& orientation() const { return orientation_; }
    // The place to go by when `found` was found on a frame of that size.
    ContentRect settle(const ContentRect& found, Size frame);
    // The window has another size now.
    void forget() { known_.reset(); }

 private:
    struct Known {
        Size frame;
        ContentRect content;
    };
    bool isBetterKnown(const ContentRect& found, Size frame) const;

    std::optional<Known> known_;
    std::optional<std::string> orientation_;
};

// The same pixels, seen through the rectangle; what lies outside the frame is left out.
PixelBuffer cropped(const PixelBuffer& frame, const PixelRect& rect);

}  // namespace tandrel
