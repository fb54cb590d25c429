#include <cstdint>

#include "screen/aspect.h"

// Any text: a ratio in (0, 1] or none.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const auto aspect =
        tandrel::parseAspect(std::string_view(reinterpret_cast<const char*>(data), size));
    if (aspect && !(*aspect > 0 && *aspect <= 1)) __builtin_trap();
    return 0;
}
