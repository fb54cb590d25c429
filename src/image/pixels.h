#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>

#include "base/pixel_buffer.h"

namespace tandrel {

// A read-only view of 8-bit pixels of four bytes: pixel (x, y) begins at byte y * rowBytes + 4 * x.
// Which of the first and third byte is blue and which red differs between sources, so every measure
// treats them alike; the second is green and the fourth is never read.
struct Pixels {
    int w = 0;         // pixels
    int h = 0;         // pixels
    int rowBytes = 0;  // may exceed 4 * w
    const std::uint8_t* base = nullptr;

    const std::uint8_t* row(int y) const {
        return base + static_cast<std::ptrdiff_t>(y) * rowBytes;
    }
    const std::uint8_t* at(int x, int y) const {
        return row(y) + 4 * static_cast<std::ptrdiff_t>(x);
    }

    // Brightness: the largest of the three colour bytes.
    int v(int x, int y) const {
        const std::uint8_t* p = at(x, y);
        return std::max({p[0], p[1], p[2]});
    }
    // Mean with green counted twice, rounded down.
    int luma(int x, int y) const {
        const std::uint8_t* p = at(x, y);
        return (p[0] + 2 * p[1] + p[2]) / 4;
    }
};

// A rectangle in pixels of a picture, origin top left.
struct PixelRect {
    double x = 0;
    double y = 0;
    double width = 0;
    double height = 0;

    bool operator==(const PixelRect&) const = default;
};

// The brightest `v` that still counts as black.
inline constexpr int BLACK = 28;

// Calls `body` with a view of the buffer's pixels, which live at least until it returns.
template <typename Body>
decltype(auto) withPixels(const PixelBuffer& buffer, Body&& body) {
    return body(Pixels{buffer.width(), buffer.height(), buffer.rowBytes(), buffer.pixels()});
}

}  // namespace tandrel
