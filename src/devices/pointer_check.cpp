#include "devices/pointer_check.h"

#include <algorithm>
#include <cstdlib>

namespace tandrel {
namespace {

constexpr int kReach = 7;           // pixels to each side of the point
constexpr int kVisibleChange = 13;  // grey levels
constexpr int kPointerMoved = 2;    // a score above this is a jump
constexpr int kLowestWin = 3;

}  // namespace

int PointerCheck::changed(const Thumbnail& before, const Thumbnail& after, ScreenPoint around) {
    const int cx = static_cast<int>(around.x * width);
    const int cy = static_cast<int>(around.y * height);
    int count = 0;
    for (int y = std::max(cy - kReach, 0); y <= std::min(cy + kReach, height - 1); ++y) {
        for (int x = std::max(cx - kReach, 0); x <= std::min(cx + kReach, width - 1); ++x) {
            const auto i = static_cast<std::size_t>(y * width + x);
            if (std::abs(before[i] - after[i]) >= kVisibleChange) ++count;
        }
    }
    return count;
}

int PointerCheck::score(const Thumbnail& before, const Thumbnail& after) {
    const auto around = [&](double x, double y) { return changed(before, after, {x, y}); };
    return std::min(around(a.x, a.y), around(b.x, b.y)) -
           std::max(around(a.x, b.y), around(b.x, a.y));
}

bool PointerCheck::pointerMoved(const Thumbnail& before, const Thumbnail& after) {
    return score(before, after) > kPointerMoved;
}

std::optional<std::size_t> clearWinner(const std::vector<int>& scores) {
    if (scores.empty()) return std::nullopt;
    const auto best = std::max_element(scores.begin(), scores.end());
    if (*best < kLowestWin) return std::nullopt;
    for (auto other = scores.begin(); other != scores.end(); ++other) {
        if (other != best && *best <= 2 * *other) return std::nullopt;
    }
    return static_cast<std::size_t>(best - scores.begin());
}

}  // namespace tandrel
