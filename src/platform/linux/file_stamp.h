#pragma once

#include <ctime>
#include <filesystem>

#include <sys/types.h>

namespace tandrel {

// What tells one state of a file, or of its absence, from the next without reading it.
struct FileStamp {
    dev_t device = 0;
    ino_t inode = 0;
    off_t size = -1;     // -1: there is no such file
    timespec changed{};  // of the inode: content, name or mode
    // Whether the change lies back far enough that another one would tell. The kernel counts the
    // time of changes in ticks of some milliseconds and uses inode numbers again, so within a tick
    // two states can look alike.
    bool settled = true;

    static FileStamp of(const std::filesystem::path& file);
    bool exists() const { return size >= 0; }
    bool looksLike(const FileStamp& other) const;
    // Whether what was read after this stamp was taken is what the file holds at `now`.
    bool stillHolds(const FileStamp& now) const { return settled && looksLike(now); }
};

}  // namespace tandrel
