#pragma once

#include <algorithm>

namespace tandrel {

// A rectangle of whole pixels, origin top left; right and bottom are one past the last pixel.
struct PixelBox {
    int left = 0;
    int top = 0;
    int right = 0;
    int bottom = 0;

    int width() const { return right - left; }
    int height() const { return bottom - top; }
    bool empty() const { return right <= left || bottom <= top; }

    void include(const PixelBox& other) {
        left = std::min(left, other.left);
        top = std::min(top, other.top);
        right = std::max(right, other.right);
        bottom = std::max(bottom, other.bottom);
    }
    bool contains(const PixelBox& other) const {
        return left <= other.left && top <= other.top && right >= other.right &&
               bottom >= other.bottom;
    }
    PixelBox intersected(const PixelBox& other) const {
        return {std::max(left, other.left), std::max(top, other.top), std::min(right, other.right),
                std::min(bottom, other.bottom)};
    }
    bool operator==(const PixelBox&) const = default;
};

// How many columns (rows) two boxes share; negative is the gap between them.
inline int sharedColumns(const PixelBox& a, const PixelBox& b) {
    return std::min(a.right, b.right) - std::max(a.left, b.left);
}
inline int sharedRows(const PixelBox& a, const PixelBox& b) {
    return std::min(a.bottom, b.bottom) - std::max(a.top, b.top);
}

}  // namespace tandrel
