#pragma once

#include <list>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "base/mutex.h"
#include "reading/picture_hash.h"
#include "reading/strip_reader.h"

namespace tandrel {

// What the strips of recent frames said, so that a line that did not change is not read again.
// Bounded: what was not seen for longest is forgotten. Any thread.
class StripMemory {
 public:
    static constexpr std::size_t kMostStrips = 2000;
    static constexpr std::size_t kMostPixels = 16 * 1024 * 1024;

    // The text of a strip whose pixels are exactly the same, wherever it lay.
    std::optional<StripText> find(const PictureHash& hash);

    // The text of a strip that lay at the same place up to a few pixels and differs by no more than
    // the noise of lossy video does.
    std::optional<StripText> findSimilar(const PixelBox& box, const Strip& strip);

    void remember(const PictureHash& hash, const PixelBox& box, Strip strip, StripText text);

    std::size_t size();

 private:
    struct Entry {
        PictureHash hash;
        PixelBox box;
        Strip strip;
        StripText text;
    };
    using Entries = std::list<Entry>;
    void forgetOldest() RUNS_ON(mutex_);
    static int rowOf(const PixelBox& box);
    void forgetPlace(Entries::iterator entry) RUNS_ON(mutex_);

    Mutex mutex_;
    Entries entries_ OWNED_BY(mutex_);  // the latest first
    std::unordered_map<std::uint64_t, Entries::iterator> byHash_ OWNED_BY(mutex_);
    std::unordered_multimap<int, Entries::iterator> byRow_ OWNED_BY(mutex_);
    std::size_t pixels_ OWNED_BY(mutex_) = 0;
};

// Whether two strips show the same text but for noise: however shifted by a pixel, no small block
// of one differs on average by more than noise from the other. A changed letter, even a point that
// becomes a comma, changes some block by far more.
bool differOnlyByNoise(const Strip& a, const Strip& b);

}  // namespace tandrel
