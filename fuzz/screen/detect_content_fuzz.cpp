#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "screen/content_rect.h"

// A picture of any size and content, any hint: a rectangle that can be used. Four bytes of size,
// one of orientation and eight of hint come first, then brightness by pixel, repeated to fill.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    constexpr std::size_t kHead = 13;
    if (size < kHead) return 0;
    const int width = (data[0] << 8 | data[1]) % 300;
    const int height = (data[2] << 8 | data[3]) % 300;
    double hint = 0;
    std::memcpy(&hint, data + 5, sizeof hint);
    const int rowBytes = 4 * width + data[4] % 3 * 4;
    std::vector<std::uint8_t> bytes(static_cast<std::size_t>(rowBytes) *
                                    static_cast<std::size_t>(height));
    const std::size_t drawn = size - kHead;
    for (std::size_t i = 0; drawn > 0 && i < bytes.size(); ++i)
        bytes[i] = data[kHead + i / 64 % drawn];

    const tandrel::Pixels pixels{width, height, rowBytes, bytes.data()};
    const auto content = tandrel::detectContent(
        pixels, data[4] & 8 ? std::optional(hint) : std::nullopt,
        data[4] & 16 ? std::optional<std::string_view>("landscape") : std::nullopt);
    const tandrel::PixelRect& rect = content.rect;
    const bool inside = rect.x >= 0 && rect.y >= 0 && rect.width >= 0 && rect.height >= 0 &&
                        rect.x + rect.width <= width + 1 && rect.y + rect.height <= height + 1;
    if (!inside) __builtin_trap();
    return 0;
}
