#include "platform/linux/image_player.h"

#include <algorithm>
#include <system_error>
#include <utility>

#include <fmt/format.h>

#include "base/log.h"
#include "base/unicode.h"

namespace tandrel {
namespace {

std::size_t bytesOf(const PixelBuffer& image) {
    return static_cast<std::size_t>(image.rowBytes()) * static_cast<std::size_t>(image.height());
}

bool isImageName(const std::filesystem::path& file) {
    const std::string ending = lowerCased(file.extension().string());
    return ending == ".png" || ending == ".jpg" || ending == ".jpeg";
}

std::vector<std::filesystem::path> imagesIn(const std::filesystem::path& folder) {
    std::vector<std::filesystem::path> files;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder, error), end;
         !error && entry != end && files.size() < ImagePlayer::kMostFiles; entry.increment(error)) {
        if (isImageName(entry->path())) files.push_back(entry->path());
    }
    std::ranges::sort(files);
    return files;
}

std::string sentence(const std::filesystem::path& file, const Error& error) {
    if (error.message.find(file.string()) != std::string::npos) return error.message;
    return fmt::format("can't show {}: {}", file.string(), error.message);
}

}  // namespace

Result<std::unique_ptr<CaptureSession>> ImagePlayer::open(Options options, Clock& clock) {
    std::unique_ptr<ImagePlayer> player(new ImagePlayer(std::move(options), clock));
    const auto ready = player->queue_.sync([&self = *player] {
        self.queue_.assertCurrent();
        return self.loadFirst();
    });
    if (!ready) return std::unexpected(ready.error());
    player->queue_.post([&self = *player] {
        self.queue_.assertCurrent();
        self.due_ = self.clock_.now();
        self.showNext();
    });
    return player;
}

ImagePlayer::ImagePlayer(Options options, Clock& clock)
    : options_(std::move(options)), clock_(clock), queue_("image-capture", clock) {}

ImagePlayer::~ImagePlayer() { queue_.stop(); }

Result<void> ImagePlayer::loadFirst() {
    startRound();
    if (files_.empty()) {
        return fail("there is no PNG or JPEG file in " + options_.path.string());
    }
    TRY(imageOf(files_.front()));
    return {};
}

void ImagePlayer::startRound() {
    next_ = 0;
    const FileStamp stamp = FileStamp::of(options_.path);
    if (listed_.stillHolds(stamp) && stamp.exists()) return;
    listed_ = stamp;
    std::error_code error;
    files_ = std::filesystem::is_directory(options_.path, error)
                 ? imagesIn(options_.path)
                 : std::vector<std::filesystem::path>{options_.path};
    for (auto entry = loaded_.begin(); entry != loaded_.end();) {
        const bool isListed = std::ranges::binary_search(files_, entry->first);
        entry = isListed ? std::next(entry) : loaded_.erase(entry);
    }
}

void ImagePlayer::showNext() {
    if (next_ >= files_.size()) startRound();
    if (next_ < files_.size()) {
        if (const auto image = imageOf(files_[next_++])) options_.sink(*image);
    }
    const TimePoint now = clock_.now();
    due_ = std::max(due_ + std::max(options_.interval, kShortestInterval), now);
    queue_.postAfter(due_ - now, [this] {
        queue_.assertCurrent();
        showNext();
    });
}

Result<PixelBuffer> ImagePlayer::imageOf(const std::filesystem::path& file) {
    const FileStamp stamp = FileStamp::of(file);
    const auto known = loaded_.find(file);
    if (known != loaded_.end() && known->second.stamp.stillHolds(stamp)) {
        if (const auto& image = known->second.image; image) return image;
        if (known->second.failed) return fail("it did not load before");
    }
    auto image = options_.load(file);
    const bool failedBefore = known != loaded_.end() && known->second.failed;
    if (!image) {
        const std::string why = sentence(file, image.error());
        if (!failedBefore) log("images: " + why);
        loaded_[file] = {.stamp = stamp, .image = {}, .failed = true};
        return fail(why);
    }
    loaded_[file] = {
        .stamp = stamp, .image = hasRoomFor(*image) ? *image : PixelBuffer(), .failed = false};
    return image;
}

bool ImagePlayer::hasRoomFor(const PixelBuffer& image) const {
    std::size_t kept = bytesOf(image);
    for (const auto& [file, loaded] : loaded_) kept += bytesOf(loaded.image);
    return kept <= kMostBytesKept;
}

}  // namespace tandrel
