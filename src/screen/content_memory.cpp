#include "screen/content_memory.h"

#include <algorithm>
#include <memory>

namespace tandrel {
namespace {

constexpr double kReach = 3;  // pixels by which a place may differ and still be the same

bool containsGrown(const PixelRect& outer, const PixelRect& inner) {
    return inner.x >= outer.x - kReach && inner.y >= outer.y - kReach &&
           inner.x + inner.width <= outer.x + outer.width + kReach &&
           inner.y + inner.height <= outer.y + outer.height + kReach;
}

}  // namespace

bool ContentMemory::isBetterKnown(const ContentRect& found, Size frame) const {
    if (!known_ || known_->frame != frame) return false;
    const ContentRect& known = known_->content;
    if (found.method == "edges" || known.method == "blank") return false;
    if (found.orientation != known.orientation) return false;
    return found.method == "blank" || containsGrown(known.rect, found.rect);
}

ContentRect ContentMemory::settle(const ContentRect& found, Size frame) {
    if (isBetterKnown(found, frame)) return known_->content;
    if (found.method != "blank") {
        known_ = Known{frame, found};
        orientation_ = found.orientation;
    }
    return found;
}

PixelBuffer cropped(const PixelBuffer& frame, const PixelRect& rect) {
    if (!frame) return {};
    const int x = std::clamp(static_cast<int>(rect.x), 0, frame.width() - 1);
    const int y = std::clamp(static_cast<int>(rect.y), 0, frame.height() - 1);
    const int width = std::clamp(static_cast<int>(rect.width), 1, frame.width() - x);
    const int height = std::clamp(static_cast<int>(rect.height), 1, frame.height() - y);
    const auto* first = frame.row(y) + static_cast<std::ptrdiff_t>(x) * PixelBuffer::kBytesPerPixel;
    return PixelBuffer::adopt(width, height, frame.rowBytes(), first,
                              std::make_shared<PixelBuffer>(frame));
}

}  // namespace tandrel
