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

    static FileStamp of(const std::filesystem::path& file);
    bool exists() const { return size >= 0; }
    // Whether the file may change once more without the stamp telling: the kernel counts the time
    // of a change in ticks of some milliseconds, and inode numbers are used again.
    bool mayHideAChange() const;

    bool operator==(const FileStamp& other) const;
};

}  // namespace tandrel
