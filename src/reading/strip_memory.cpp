#include "reading/strip_memory.h"

#include <cstdlib>

namespace tandrel {

namespace {

// Places are looked up by bands of rows.
constexpr int kBandRows = 16;
constexpr int kSamePlace = 4;  // pixels

constexpr int kBlock = 6;
constexpr int kShift = 1;
constexpr int kWidthSlack = 2;
// Mean difference in grey levels of a block. Recompressed frames stay at 4 (median) to 12 (95 %);
// every changed character that was tried, down to 12 points, was above 40.
constexpr int kNoise = 22;

bool isSamePlace(const PixelBox& a, const PixelBox& b) {
    return std::abs(a.left - b.left) <= kSamePlace && std::abs(a.top - b.top) <= kSamePlace &&
           std::abs(a.right - b.right) <= kSamePlace && std::abs(a.bottom - b.bottom) <= kSamePlace;
}

// The sum of differences of one block of `a` to `b` shifted by (dx, dy); beyond the edge is white.
int blockDifference(const Strip& a, const Strip& b, int left, int top, int dx, int dy) {
    int sum = 0;
    for (int y = top; y < std::min(top + kBlock, Strip::kRows); ++y) {
        const int otherY = y + dy;
        const std::uint8_t* other = otherY >= 0 && otherY < Strip::kRows ? b.row(otherY) : nullptr;
        for (int x = left; x < std::min(left + kBlock, a.columns); ++x) {
            const int otherX = x + dx;
            const bool inside = other && otherX >= 0 && otherX < b.columns;
            sum += std::abs(a.row(y)[x] - (inside ? other[otherX] : 255));
        }
    }
    return sum;
}

bool matchesShifted(const Strip& a, const Strip& b, int dx, int dy) {
    constexpr int kStep = kBlock / 2;  // overlapping, so that no change hides on a seam
    for (int y = 0; y < Strip::kRows; y += kStep) {
        for (int x = 0; x < a.columns; x += kStep) {
            if (blockDifference(a, b, x, y, dx, dy) > kNoise * kBlock * kBlock) return false;
        }
    }
    return true;
}

}  // namespace

bool differOnlyByNoise(const Strip& a, const Strip& b) {
    if (std::abs(a.columns - b.columns) > kWidthSlack) return false;
    for (int dy = -kShift; dy <= kShift; ++dy) {
        for (int dx = -kShift; dx <= kShift; ++dx) {
            if (matchesShifted(a, b, dx, dy)) return true;
        }
    }
    return false;
}

std::optional<StripText> StripMemory::find(const PictureHash& hash) {
    MutexLock lock(mutex_);
    const auto found = byHash_.find(hash.first);
    if (found == byHash_.end() || found->second->hash != hash) return std::nullopt;
    entries_.splice(entries_.begin(), entries_, found->second);
    return found->second->text;
}

std::optional<StripText> StripMemory::findSimilar(const PixelBox& box, const Strip& strip) {
    MutexLock lock(mutex_);
    for (int band = rowOf(box) - 1; band <= rowOf(box) + 1; ++band) {
        const auto [first, last] = byRow_.equal_range(band);
        for (auto at = first; at != last; ++at) {
            const Entry& entry = *at->second;
            if (!isSamePlace(entry.box, box) || !differOnlyByNoise(strip, entry.strip)) continue;
            entries_.splice(entries_.begin(), entries_, at->second);
            return entry.text;
        }
    }
    return std::nullopt;
}

void StripMemory::remember(const PictureHash& hash, const PixelBox& box, Strip strip,
                           StripText text) {
    MutexLock lock(mutex_);
    if (const auto old = byHash_.find(hash.first); old != byHash_.end()) {
        pixels_ -= old->second->strip.pixels.size();
        forgetPlace(old->second);
        entries_.erase(old->second);
        byHash_.erase(old);
    }
    pixels_ += strip.pixels.size();
    entries_.push_front({hash, box, std::move(strip), std::move(text)});
    byHash_[hash.first] = entries_.begin();
    byRow_.emplace(rowOf(box), entries_.begin());
    while (entries_.size() > kMostStrips || pixels_ > kMostPixels) forgetOldest();
}

std::size_t StripMemory::size() {
    MutexLock lock(mutex_);
    return entries_.size();
}

int StripMemory::rowOf(const PixelBox& box) { return box.top / kBandRows; }

void StripMemory::forgetOldest() {
    const auto oldest = std::prev(entries_.end());
    pixels_ -= oldest->strip.pixels.size();
    byHash_.erase(oldest->hash.first);
    forgetPlace(oldest);
    entries_.erase(oldest);
}

void StripMemory::forgetPlace(Entries::iterator entry) {
    const auto [first, last] = byRow_.equal_range(rowOf(entry->box));
    for (auto at = first; at != last; ++at) {
        if (at->second != entry) continue;
        byRow_.erase(at);
        return;
    }
}

}  // namespace tandrel
