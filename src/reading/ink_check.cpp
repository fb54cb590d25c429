#include "reading/ink_check.h"

#include <algorithm>

#include "reading/components.h"

namespace tandrel {

bool contradictsInk(const Strip& strip, std::string_view text) {
    std::vector<std::uint8_t> mask(strip.pixels.size());
    std::ranges::transform(strip.pixels, mask.begin(), Strip::isInk);
    const auto parts = connectedComponents(mask.data(), strip.columns, Strip::kRows);
    PixelBox all{strip.columns, Strip::kRows, 0, 0};
    for (const Component& part : parts) all.include(part.box);
    std::vector<int> bottoms;
    for (const Component& part : parts) {
        if (part.box.height() * 2 > all.height()) bottoms.push_back(part.box.bottom);
    }
    if (bottoms.empty()) return true;
    std::ranges::sort(bottoms);
    const int digitBottom = bottoms[bottoms.size() / 2];
    const auto marks = std::ranges::count_if(parts, [&](const Component& part) {
        const bool isSmall =
            part.box.height() * 5 <= all.height() * 2 && part.box.width() * 3 <= all.height();
        return isSmall && part.area > 1 && part.box.top * 2 > all.top + digitBottom &&
               part.box.bottom * 8 >= digitBottom * 7;
    });
    const auto expected =
        std::ranges::count_if(text, [](char c) { return std::string_view(".,:;!?").contains(c); });
    return marks != expected;
}

}  // namespace tandrel
