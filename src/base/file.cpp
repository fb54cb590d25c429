#include "base/file.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/file_descriptor.h"

namespace tandrel {
namespace {

// Another program's file that grew larger than this between two looks is not compared.
constexpr std::size_t kLargestCompared = 64 * 1024 * 1024;

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

// A file under a name of its own that goes at the end unless it was renamed or is kept.
class TemporaryFile {
 public:
    explicit TemporaryFile(std::string name) : name_(std::move(name)) {}
    ~TemporaryFile() {
        if (!name_.empty()) ::unlink(name_.c_str());
    }
    TemporaryFile(TemporaryFile&& other) noexcept : name_(std::exchange(other.name_, {})) {}
    TemporaryFile& operator=(TemporaryFile&&) = delete;
    TemporaryFile(const TemporaryFile&) = delete;
    TemporaryFile& operator=(const TemporaryFile&) = delete;

    const char* name() const { return name_.c_str(); }
    void keep() { name_.clear(); }

 private:
    std::string name_;
};

// The new content, whole and synced, beside the file that it is to replace.
Result<TemporaryFile> writeBeside(const std::filesystem::path& target, std::string_view content) {
    const std::filesystem::path folder = target.parent_path();
    std::error_code error;
    std::filesystem::create_directories(folder, error);
    if (error) return fail(fmt::format("can't create {}: {}", folder.string(), error.message()));
    std::string name = target.string() + ".XXXXXX";
    const FileDescriptor file(::mkostemp(name.data(), O_CLOEXEC));
    if (!file) return cannot("write beside", target);
    TemporaryFile temporary(std::move(name));
    keepModeAndOwner(file.get(), target);
    TRY_VOID(writeAll(file.get(), content, temporary.name()));
    if (::fsync(file.get()) != 0) return cannot("sync", temporary.name());
    return temporary;
}

void syncFolder(const std::filesystem::path& folder) {
    const FileDescriptor handle(::open(folder.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
    if (handle) ::fsync(handle.get());
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

bool cannotHere(int code) { return code == EINVAL || code == ENOSYS; }

bool holds(const std::filesystem::path& file, std::string_view text) {
    const auto content = readFile(file, text.size());
    return content && *content == text;
}

bool exchange(const TemporaryFile& beside, const std::filesystem::path& target) {
    return ::renameat2(AT_FDCWD, beside.name(), AT_FDCWD, target.c_str(), RENAME_EXCHANGE) == 0;
}

// What an exchange brought out was not expected, so it is another program's and goes back. Should
// that bring out something still newer, that one goes back in turn. `beside` holds in the end what
// nobody needs.
Result<Replacement> putBack(TemporaryFile& beside, const std::filesystem::path& target,
                            std::string ours) {
    constexpr int kMostTurns = 8;
    std::optional<std::string> comingOut = std::move(ours);
    for (int turn = 0; turn < kMostTurns; ++turn) {
        const auto goingBack = readFile(beside.name(), kLargestCompared);
        if (!exchange(beside, target)) break;
        if (comingOut && holds(beside.name(), *comingOut)) return Replacement::changedMeanwhile;
        comingOut = goingBack ? std::optional(*goingBack) : std::nullopt;
    }
    const std::string kept = beside.name();
    beside.keep();
    return fail(fmt::format("another program keeps changing {}; a state of it is kept as {}",
                            target.string(), kept));
}

Result<Replacement> placeNew(TemporaryFile& beside, const std::filesystem::path& target) {
    if (::renameat2(AT_FDCWD, beside.name(), AT_FDCWD, target.c_str(), RENAME_NOREPLACE) == 0) {
        beside.keep();
        return Replacement::done;
    }
    if (cannotHere(errno) && ::link(beside.name(), target.c_str()) == 0) return Replacement::done;
    if (errno == EEXIST) return Replacement::changedMeanwhile;
    return cannot("create", target);
}

Result<Replacement> placeOver(TemporaryFile& beside, const std::filesystem::path& target,
                              const std::string& expected, std::string_view content) {
    if (!holds(target, expected)) return Replacement::changedMeanwhile;
    if (exchange(beside, target)) {
        if (holds(beside.name(), expected)) return Replacement::done;
        return putBack(beside, target, std::string(content));
    }
    if (errno == ENOENT) return Replacement::changedMeanwhile;
    if (!cannotHere(errno)) return cannot("replace", target);
    if (!holds(target, expected)) return Replacement::changedMeanwhile;
    if (::rename(beside.name(), target.c_str()) != 0) return cannot("replace", target);
    beside.keep();
    return Replacement::done;
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

bool isExecutableFile(const std::filesystem::path& path) {
    std::error_code error;
    return std::filesystem::is_regular_file(path, error) && ::access(path.c_str(), X_OK) == 0;
}

Result<void> replaceFile(const std::filesystem::path& path, std::string_view content) {
    const std::filesystem::path target = TRY(followLinks(path));
    TemporaryFile beside = TRY(writeBeside(target, content));
    if (::rename(beside.name(), target.c_str()) != 0) return cannot("replace", target);
    beside.keep();
    syncFolder(target.parent_path());
    return {};
}

Result<Replacement> replaceFileHolding(const std::filesystem::path& path,
                                       const std::optional<std::string>& expected,
                                       std::string_view content) {
    const std::filesystem::path target = TRY(followLinks(path));
    TemporaryFile beside = TRY(writeBeside(target, content));
    const Replacement outcome =
        TRY(expected ? placeOver(beside, target, *expected, content) : placeNew(beside, target));
    // Before the old file goes with `beside`: a crash of the computer may then lose neither.
    syncFolder(target.parent_path());
    return outcome;
}

}  // namespace tandrel
