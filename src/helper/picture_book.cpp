#include "helper/picture_book.h"

namespace tandrel {

void PictureBook::remember(const std::string& phone, PictureSize size) {
    MutexLock lock(mutex_);
    if (sizes_.size() >= kMostPhones && !sizes_.contains(phone)) sizes_.clear();
    sizes_[phone] = size;
}

std::optional<PictureSize> PictureBook::find(const std::string& phone) const {
    MutexLock lock(mutex_);
    const auto found = sizes_.find(phone);
    if (found == sizes_.end()) return std::nullopt;
    return found->second;
}

std::vector<std::string> PictureBook::phones() const {
    MutexLock lock(mutex_);
    std::vector<std::string> names;
    for (const auto& [phone, size] : sizes_) names.push_back(phone);
    return names;
}

}  // namespace tandrel
