#include <cstddef>
#include <cstdint>

#include "reading/network_strip_reader.h"

// Whatever a traineddata file holds, it is refused or can be run.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    auto model = tandrel::parseLineModel({data, size});
    if (!model) return 0;
    tandrel::Strip strip;
    strip.columns = 40;
    strip.pixels.assign(std::size_t{40} * tandrel::Strip::kRows, 255);
    for (std::size_t i = 0; i < strip.pixels.size(); i += 7) strip.pixels[i] = 0;
    tandrel::NetworkStripReader reader(*std::move(model));
    return reader.read(std::span(&strip, 1)) ? 0 : -1;
}
