#include <chrono>
#include <cstdio>
#include <functional>
#include <random>

#include "platform/linux/linux_text_recognizer.h"
#include "reading/drawn_frame.h"
#include "text/measured.h"

namespace tandrel {

namespace {

using Level = std::function<std::uint8_t(int x, int y)>;

PixelBuffer pattern(int width, int height, const Level& level) {
    return PixelBuffer::make(width, height, [&](std::uint8_t* pixels, int rowBytes) {
        for (int y = 0; y < height; ++y) {
            for (int x = 0; x < 4 * width; ++x) {
                pixels[std::ptrdiff_t{y} * rowBytes + x] = level(x / 4, y);
            }
        }
    });
}

PixelBuffer board(int cell) {
    return pattern(1290, 2796, [cell](int x, int y) {
        return static_cast<std::uint8_t>((x / cell + y / cell) % 2 * 255);
    });
}

PixelBuffer noise(unsigned from, unsigned levels) {
    std::mt19937 random(3);
    return pattern(1290, 2796,
                   [&](int, int) { return static_cast<std::uint8_t>(from + random() % levels); });
}

// Dots of three by three pixels as far apart, like letters of a text set very small.
PixelBuffer dots() {
    return pattern(1290, 2796, [](int x, int y) {
        return static_cast<std::uint8_t>(x % 9 < 3 && y % 18 < 12 ? 0 : 255);
    });
}

PixelBuffer tenThousandLines() {
    DrawnFrame frame(1800, 17000, 1, kWhite);
    for (int row = 0; row < 1000; ++row) {
        for (int column = 0; column < 10; ++column) {
            frame.text(column * 180 + 4, row * 17 + 14, "$12.50 in words", {.points = 12});
        }
    }
    return frame.frame();
}

struct HardFrame {
    const char* name;
    std::function<PixelBuffer()> make;
};

const HardFrame kFrames[] = {
    {"1x1", [] { return pattern(1, 1, [](int, int) { return std::uint8_t{0}; }); }},
    {"20,000x10", [] { return pattern(20000, 10, [](int x, int) { return std::uint8_t(x); }); }},
    {"10x20,000", [] { return pattern(10, 20000, [](int, int y) { return std::uint8_t(y); }); }},
    {"one colour", [] { return noise(77, 1); }},
    {"noise", [] { return noise(0, 256); }},
    {"faint noise", [] { return noise(100, 40); }},
    {"board of 1 pixel", [] { return board(1); }},
    {"board of 3 pixels", [] { return board(3); }},
    {"board of 7 pixels", [] { return board(7); }},
    {"board of 20 pixels", [] { return board(20); }},
    {"dots", dots},
    {"10,000 lines", tenThousandLines},
};

}  // namespace

double measureHardFrames() {
    double longest = 0;
    for (const HardFrame& hard : kFrames) {
        const PixelBuffer frame = hard.make();
        const auto recognizer = *makeTextRecognizer();
        const auto start = std::chrono::steady_clock::now();
        const auto text = recognizer->read(frame).value();
        const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
        std::printf("hard frame: %-20s %6.3f s, %zu records, %zu areas unread\n", hard.name,
                    passed.count(), text.records.size(), text.unread.size());
        longest = std::max(longest, passed.count());
    }
    std::printf("\n");
    return longest;
}

}  // namespace tandrel
