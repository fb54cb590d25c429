#include "app/trash.h"

#include <cerrno>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include "base/file.h"
#include "base/log.h"
#include "http/target.h"

namespace tandrel {
namespace {

namespace fs = std::filesystem;

constexpr int kMostOfOneName = 1000;

// As a path in a URL: the slashes stay.
std::string encodedPath(const fs::path& path) {
    std::string encoded;
    for (const fs::path& part : path.relative_path()) {
        encoded += "/" + percentEncoded(part.string());
    }
    return encoded;
}

std::string infoOf(const fs::path& what, Clock& clock) {
    return fmt::format("[Trash Info]\nPath={}\nDeletionDate={}\n", encodedPath(fs::absolute(what)),
                       localTimestamp(clock.wallNow()));
}

}  // namespace

// The information goes first: its name is what reserves the place.
Result<void> moveToTrash(const fs::path& what, const fs::path& trash, Clock& clock) {
    std::error_code error;
    fs::create_directories(trash / "files", error);
    if (error) return fail(fmt::format("can't create {}: {}", trash.string(), error.message()));
    const std::string name = what.filename().string();
    for (int i = 1; i <= kMostOfOneName; ++i) {
        const std::string free = i == 1 ? name : fmt::format("{}.{}", name, i);
        const fs::path info = trash / "info" / (free + ".trashinfo");
        const auto reserved = TRY(replaceFileHolding(info, std::nullopt, infoOf(what, clock)));
        if (reserved != Replacement::done) continue;
        const fs::path place = trash / "files" / free;
        if (::renameat2(AT_FDCWD, what.c_str(), AT_FDCWD, place.c_str(), RENAME_NOREPLACE) == 0) {
            return {};
        }
        const int code = errno;
        fs::remove(info, error);
        if (code != EEXIST) {
            return fail(
                fmt::format("can't move {} to the trash: {}", what.string(), systemError(code)));
        }
    }
    return fail(fmt::format("there are too many things named {} in the trash", name));
}

}  // namespace tandrel
