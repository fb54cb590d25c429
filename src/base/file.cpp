#include "base/file.h"

#include <cerrno>
#include <cstdlib>
#include <system_error>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/file_descriptor.h"

namespace tandrel {
namespace {

std::unexpected<Error> cannot(const char* verb, const std::filesystem::path& path) {
    return fail(fmt::format("can't {} {}: {}", verb, path.string(), systemError(errno)));
}

Result<void> writeAll(int fd, std::string_view content, const std::filesystem::path& path) {
    while (!content.empty()) {
        const ssize_t count = ::write(fd, content.data(), content.size());
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return cannot("write", path);
        content.remove_prefix(static_cast<std::size_t>(count));
    }
    return {};
}

// What the new file takes over from the one it replaces.
void keepModeAndOwner(int fd, const std::filesystem::path& old) {
    struct stat info{};
    if (::stat(old.c_str(), &info) != 0) {
        ::fchmod(fd, S_IRUSR | S_IWUSR);
        return;
    }
    ::fchmod(fd, info.st_mode & 07777);
    if (::fchown(fd, info.st_uid, info.st_gid) != 0) return;  // only root may give files away
}

Result<void> writeAndRename(const std::string& temporary, int fd, std::string_view content,
                            const std::filesystem::path& target) {
    keepModeAndOwner(fd, target);
    TRY_VOID(writeAll(fd, content, temporary));
    if (::fsync(fd) != 0) return cannot("sync", temporary);
    if (::rename(temporary.c_str(), target.c_str()) != 0) return cannot("replace", target);
    return {};
}

// The file that a symbolic link stands for, whether or not it exists.
Result<std::filesystem::path> followLinks(const std::filesystem::path& path) {
    constexpr int kMostLinks = 40;  // as many as the kernel follows
    std::error_code error;
    std::filesystem::path target = std::filesystem::absolute(path, error);
    for (int i = 0; i < kMostLinks && !error; ++i) {
        if (!std::filesystem::is_symlink(std::filesystem::symlink_status(target, error))) {
            return target;
        }
        target = target.parent_path() / std::filesystem::read_symlink(target, error);
    }
    return fail(fmt::format("can't follow {}: {}", path.string(), systemError(ELOOP)));
}

}  // namespace

std::string systemError(int code) { return std::generic_category().message(code); }

Result<std::string> readFile(const std::filesystem::path& path, std::size_t limit) {
    const FileDescriptor file(::open(path.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
    if (file.get() < 0) return cannot("read", path);
    struct stat info{};
    if (::fstat(file.get(), &info) != 0) return cannot("read", path);
    if (S_ISDIR(info.st_mode))
        return fail(fmt::format("can't read {}: it is a folder", path.string()));
    if (!S_ISREG(info.st_mode)) {
        return fail(fmt::format("can't read {}: it is not a regular file", path.string()));
    }
    std::string content;
    char chunk[65536];
    while (true) {
        const ssize_t count = ::read(file.get(), chunk, sizeof chunk);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0) return cannot("read", path);
        if (count == 0) return content;
        content.append(chunk, static_cast<std::size_t>(count));
        if (content.size() > limit) {
            return fail(
                fmt::format("can't read {}: it is larger than {} bytes", path.string(), limit));
        }
    }
}

Result<void> replaceFile(const std::filesystem::path& path, std::string_view content) {
    const std::filesystem::path target = TRY(followLinks(path));
    const std::filesystem::path folder = target.parent_path();
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) return fail(fmt::format("can't create {}: {}", folder.string(), error.message()));

    std::string temporary = target.string() + ".XXXXXX";
    const FileDescriptor file(::mkostemp(temporary.data(), O_CLOEXEC));
    if (file.get() < 0) return cannot("write beside", target);
    if (const auto written = writeAndRename(temporary, file.get(), content, target); !written) {
        ::unlink(temporary.c_str());
        return written;
    }
    const FileDescriptor folderHandle(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (folderHandle.get() >= 0) ::fsync(folderHandle.get());
    return {};
}

}  // namespace tandrel
