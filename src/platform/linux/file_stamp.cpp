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
    timespec now{};
    ::clock_gettime(CLOCK_REALTIME, &now);
    return {.device = info.st_dev,
            .inode = info.st_ino,
            .size = info.st_size,
            .changed = info.st_ctim,
            .settled = sinceEpoch(now) - sinceEpoch(info.st_ctim) >= kTick};
}

bool FileStamp::looksLike(const FileStamp& other) const {
    return device == other.device && inode == other.inode && size == other.size &&
           changed.tv_sec == other.changed.tv_sec && changed.tv_nsec == other.changed.tv_nsec;
}

}  // namespace tandrel
