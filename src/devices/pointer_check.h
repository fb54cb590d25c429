#pragma once

#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "hid/input.h"

// Whether the pointer of a phone jumped from one known point to another, seen on small grey
// pictures of its screen.
namespace tandrel {

struct PointerCheck {
    static constexpr int width = 90;
    static constexpr int height = 195;
    static constexpr ScreenPoint a{0.3, 0.35};
    static constexpr ScreenPoint b{0.7, 0.65};

    // `width` x `height` grey bytes, row by row.
    using Thumbnail = std::vector<std::uint8_t>;

    // How many pixels of the 15 x 15 window around the point differ by 13 levels or more.
    static int changed(const Thumbnail& before, const Thumbnail& after, ScreenPoint around);
    // Positive when both probe points changed and the two other corners of their rectangle did not:
    // a jump of the pointer scores high, a screen that scrolls or dims changes all four alike.
    static int score(const Thumbnail& before, const Thumbnail& after);
    static bool pointerMoved(const Thumbnail& before, const Thumbnail& after);
};

// The index of the winner of one probe: at least 3, and more than twice the second best.
std::optional<std::size_t> clearWinner(const std::vector<int>& scores);

}  // namespace tandrel
