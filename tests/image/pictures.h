#pragma once

#include <cstdint>
#include <memory>
#include <random>
#include <vector>

#include "base/pixel_buffer.h"
#include "image/pixels.h"

// Pictures drawn for tests.
namespace tandrel::pictures {

struct Colour {
    int red = 0;
    int green = 0;
    int blue = 0;
};

inline constexpr Colour kBlack{0, 0, 0};
inline constexpr Colour kWhite{255, 255, 255};

inline void put(std::uint8_t* pixel, Colour colour, int alpha = 255) {
    pixel[0] = static_cast<std::uint8_t>(colour.blue);
    pixel[1] = static_cast<std::uint8_t>(colour.green);
    pixel[2] = static_cast<std::uint8_t>(colour.red);
    pixel[3] = static_cast<std::uint8_t>(alpha);
}

// One whose pixel (x, y) is colourAt(x, y).
template <typename ColourAt>
PixelBuffer drawn(int width, int height, ColourAt colourAt) {
    return PixelBuffer::make(width, height, [&](std::uint8_t* pixels, int rowBytes) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < width; ++x) put(pixels + y * rowBytes + 4 * x, colourAt(x, y));
        }
    });
}

inline PixelBuffer plain(int width, int height, Colour colour) {
    return drawn(width, height, [&](int, int) { return colour; });
}

// Black but for one rectangle.
inline PixelBuffer onBlack(int width, int height, const PixelRect& rect, Colour colour = kWhite) {
    return drawn(width, height, [&](int x, int y) {
        const bool inColumns = x >= rect.x && x < rect.x + rect.width;
        const bool inRows = y >= rect.y && y < rect.y + rect.height;
        return inColumns && inRows ? colour : kBlack;
    });
}

// A phone's screen of 603 x 1311 in a black window.
inline PixelBuffer phoneInAWindow() {
    return onBlack(800, 1400, {90, 40, 603, 1311}, {40, 80, 120});
}

// Every byte random, alpha as well.
inline PixelBuffer noise(int width, int height) {
    return PixelBuffer::make(width, height, [&](std::uint8_t* pixels, int rowBytes) {
        std::mt19937 random(7);
        for (int i = 0; i < rowBytes * height; ++i) pixels[i] = static_cast<std::uint8_t>(random());
    });
}

// Like a page of text: lines of short dark strokes on flat areas, many rows alike.
inline PixelBuffer textLike(int width, int height) {
    return drawn(width, height, [](int x, int y) {
        const bool stroke = y % 24 < 14 && (x * 7 + y / 24 * 13) % 11 < 4 && x % 90 < 70;
        return stroke ? Colour{20, 20, 24} : Colour{242, 242, 247};
    });
}

// The same picture with `padding` bytes of garbage after each row.
inline PixelBuffer padded(const PixelBuffer& picture, int padding) {
    const int rowBytes = 4 * picture.width() + padding;
    const auto bytes = std::make_shared<std::vector<std::uint8_t>>(
        static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(picture.height()), 0xa5);
    for (int y = 0; y < picture.height(); ++y) {
        std::copy_n(picture.row(y), 4 * picture.width(), bytes->data() + y * rowBytes);
    }
    return PixelBuffer::adopt(picture.width(), picture.height(), rowBytes, bytes->data(), bytes);
}

inline std::pair<int, int> sizeOf(const PixelBuffer& picture) {
    return {picture.width(), picture.height()};
}

inline Colour colourAt(const PixelBuffer& picture, int x, int y) {
    const std::uint8_t* p = picture.row(y) + 4 * x;
    return {p[2], p[1], p[0]};
}

inline bool operator==(const Colour& a, const Colour& b) {
    return a.red == b.red && a.green == b.green && a.blue == b.blue;
}

// Whether sizes and all colours are equal; alpha is not looked at.
inline bool sameColours(const PixelBuffer& a, const PixelBuffer& b) {
    if (a.width() != b.width() || a.height() != b.height()) return false;
    for (int y = 0; y < a.height(); ++y) {
        for (int x = 0; x < a.width(); ++x) {
            if (!(colourAt(a, x, y) == colourAt(b, x, y))) return false;
        }
    }
    return true;
}

}  // namespace tandrel::pictures
