#include <algorithm>
#include <cstring>

#include "image/gdp_reader.h"

// Any bytes as what a receiver writes, in pieces whose size the first byte says.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::size_t step = data[0] + std::size_t{1};
    tandrel::GdpReader reader;
    for (std::size_t at = 1; at < size;) {
        const auto space = reader.space();
        if (space.empty()) __builtin_trap();
        const std::size_t count = std::min({space.size(), step, size - at});
        std::memcpy(space.data(), data + at, count);
        at += count;
        const auto event = reader.take(count);
        if (!event) return event.error().message.empty() ? __builtin_trap(), 0 : 0;
        if (!*event || !(*event)->frame) continue;
        // Reading the last pixel shows a buffer that is too small.
        const auto& frame = (*event)->frame;
        volatile std::uint8_t last = frame.row(frame.height() - 1)[4 * frame.width() - 1];
        if (last != 255) __builtin_trap();
    }
    return 0;
}
