#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>

#include "platform/virtual/hid_report_map.h"

// The first byte says how much of the input is a report; the rest is the map.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    using namespace tandrel;
    if (size == 0) return 0;
    const std::size_t reportSize = std::min<std::size_t>(data[0], size - 1);
    const std::span<const std::uint8_t> report(data + 1, reportSize);
    const auto map = HidReportMap::parse({data + 1 + reportSize, size - 1 - reportSize});
    if (!map) return 0;
    for (int id = 0; id < 256; ++id) map->decode(static_cast<std::uint8_t>(id), report);
    return 0;
}
