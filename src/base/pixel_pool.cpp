#include "base/pixel_pool.h"

#include <utility>
#include <vector>

#include "base/mutex.h"

namespace tandrel {
namespace {
using Pixels = std::unique_ptr<std::uint8_t[]>;
}

// Memory of one size that nobody uses at the moment.
class PixelPool::Store {
 public:
    Pixels take(std::size_t size) {
        MutexLock lock(mutex_);
        if (size != size_) free_.clear();  // of a form that has passed
        size_ = size;
        if (free_.empty()) return std::make_unique_for_overwrite<std::uint8_t[]>(size);
        Pixels pixels = std::move(free_.back());
        free_.pop_back();
        return pixels;
    }
    void giveBack(Pixels pixels, std::size_t size) {
        MutexLock lock(mutex_);
        if (size == size_ && free_.size() < kMostKept) free_.push_back(std::move(pixels));
    }

 private:
    Mutex mutex_;
    std::size_t size_ OWNED_BY(mutex_) = 0;
    std::vector<Pixels> free_ OWNED_BY(mutex_);
};

PixelPool::PixelPool() : store_(std::make_shared<Store>()) {}

PixelBuffer PixelPool::make(int width, int height,
                            const std::function<void(std::uint8_t*, int)>& draw) {
    const int rowBytes = width * PixelBuffer::kBytesPerPixel;
    const std::size_t size = static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(height);
    std::uint8_t* const pixels = store_->take(size).release();
    std::shared_ptr<const void> owner(pixels, [store = store_, size](std::uint8_t* unused) {
        store->giveBack(Pixels(unused), size);
    });
    draw(pixels, rowBytes);
    return PixelBuffer::adopt(width, height, rowBytes, pixels, std::move(owner));
}

}  // namespace tandrel
