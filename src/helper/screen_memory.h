#pragma once

#include <atomic>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/mutex.h"

namespace tandrel {

// The wall clock in milliseconds since 1970, as the engine counts screen changes.
double millisecondsNow();

struct PictureSize {
    int width = 0;
    int height = 0;
};

// What is remembered of the phones' screens between calls. Any thread.
class ScreenMemory {
 public:
    // More phones than one computer can have; past that the memory of them begins afresh.
    static constexpr std::size_t kMostPhones = 64;

    // The picture of this phone that the assistant saw last: its points are in that one's pixels.
    void remember(const std::string& phone, PictureSize size);
    std::optional<PictureSize> find(const std::string& phone) const;
    // The phones of which there are pictures.
    std::vector<std::string> phones() const;

    // Whether the next picture is likely to be small enough as PNG, judged by the one before.
    bool expectsPng() const { return expectsPng_; }
    void expectPng(bool isLikely) { expectsPng_ = isLikely; }

    // When the last action had been done, in milliseconds since 1970; 0 before any. What changed
    // on the screen after that is likely to be its doing.
    double lastAction() const { return lastAction_; }
    void acted(double time) { lastAction_ = time; }

 private:
    std::atomic<bool> expectsPng_ = true;
    std::atomic<double> lastAction_ = 0;
    mutable Mutex mutex_;
    std::map<std::string, PictureSize> sizes_ OWNED_BY(mutex_);
};

}  // namespace tandrel
