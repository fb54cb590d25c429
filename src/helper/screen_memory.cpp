#include "helper/screen_memory.h"

#include "base/clock.h"

namespace tandrel {

double millisecondsNow() {
    return std::chrono::duration<double, std::milli>(systemClock().wallNow().time_since_epoch())
        .count();
}

void ScreenMemory::remember(const std::string& phone, PictureSize size) {
    MutexLock lock(mutex_);
    if (sizes_.size() >= kMostPhones && !sizes_.contains(phone)) sizes_.clear();
    sizes_[phone] = size;
}

std::optional<PictureSize> ScreenMemory::find(const std::string& phone) const {
    MutexLock lock(mutex_);
    const auto found = sizes_.find(phone);
    if (found == sizes_.end()) return std::nullopt;
    return found->second;
}

std::vector<std::string> ScreenMemory::phones() const {
    MutexLock lock(mutex_);
    std::vector<std::string> names;
    for (const auto& [phone, size] : sizes_) names.push_back(phone);
    return names;
}

}  // namespace tandrel
