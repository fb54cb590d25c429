#include "platform/linux/file_stamp.h"

#include <chrono>
#include <cstdint>

#include <sys/stat.h>

namespace tandrel {
namespace {

// Ten times the coarsest tick (100 Hz).
constexpr std::chrono::nanoseconds kTick = std::chrono::milliseconds(100);

std::chrono::nanoseconds sinceEpoch(const timespec& time) {
    return std::chrono::seconds(time.tv_sec) + std::chrono::nanoseconds(time.tv_nsec);
}

}  // namespace

FileStamp FileStamp::of(const std::filesystem::path& file) {
    struct stat info{};
    if (::stat(file.c_str(), &info) != 0) return {};
    return {info.st_dev, info.st_ino, info.st_size, info.st_ctim};
}

bool FileStamp::mayHideAChange() const {
    if (!exists()) return false;
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return sinceEpoch(now) - sinceEpoch(changed) < kTick;
}

bool FileStamp::operator==(const FileStamp& other) const {
    return device == other.device && inode == other.inode && size == other.size &&
           changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec;
}

}  // namespace tandrel
