#include <cstddef>
#include <cstdint>
#include <cstdlib>

#include "reading/line_finder.h"
#include "reading/strip.h"

namespace {

constexpr int kMostPixels = 1 << 16;

}  // namespace

// Two bytes of width, then the pixels, which repeat if there are too few for four rows. Every line
// found lies on the frame and makes a strip.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size < 3) return 0;
    const int width = 1 + (data[0] | data[1] << 8) % 2000;
    const int wanted = static_cast<int>(size - 2) / width;
    const int height = std::clamp(wanted, 4, kMostPixels / width + 1);
    tandrel::GrayFrame frame(width, height);
    std::size_t at = 2;
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            frame.row(y)[x] = data[at];
            if (++at == size) at = 2;
        }
    }
    for (const auto& line : tandrel::findLines(frame)) {
        if (line.ink.box.empty() || !frame.bounds().contains(line.ink.box)) std::abort();
        if (tandrel::makeStrip(frame, line.ink, 0.15).columns < 1) std::abort();
    }
    return 0;
}
