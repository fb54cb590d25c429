#pragma once

#include <atomic>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "base/mutex.h"

namespace tandrel {

struct PictureSize {
    int width = 0;
    int height = 0;
};

// Which picture of each phone the assistant saw last: its points are in that picture's pixels. Any
// thread.
class PictureBook {
 public:
    // More phones than one computer can have; past that the book begins afresh.
    static constexpr std::size_t kMostPhones = 64;

    void remember(const std::string& phone, PictureSize size);
    std::optional<PictureSize> find(const std::string& phone) const;
    // The phones of which there are pictures.
    std::vector<std::string> phones() const;

    // Whether the next picture is likely to be small enough as PNG, judged by the one before.
    bool expectsPng() const { return expectsPng_; }
    void expectPng(bool isLikely) { expectsPng_ = isLikely; }

 private:
    std::atomic<bool> expectsPng_ = true;
    mutable Mutex mutex_;
    std::map<std::string, PictureSize> sizes_ OWNED_BY(mutex_);
};

}  // namespace tandrel
