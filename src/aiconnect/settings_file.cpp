#include "aiconnect/settings_file.h"

#include <cerrno>

#include <fcntl.h>
#include <fmt/chrono.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/file.h"
#include "base/file_descriptor.h"

namespace tandrel {
namespace {

// Two programs that write for ever would keep each other busy.
constexpr int kMostAttempts = 8;
constexpr int kMostBackupsOfOneSecond = 100;

std::unexpected<Error> prefixed(const std::string& beginning, const Error& error) {
    return fail(beginning + error.message);
}

// A replacement needs only the folder's permission; the file's own says whether it is wanted. It
// must stay its owner's, too, and only root may give files away.
Result<void> mayWrite(const std::filesystem::path& file) {
    const FileDescriptor handle(::open(file.c_str(), O_WRONLY | O_CLOEXEC | O_NONBLOCK));
    if (!handle) return fail(systemError(errno));
    struct stat info{};
    if (::fstat(handle.get(), &info) != 0) return fail(systemError(errno));
    if (info.st_uid != ::geteuid() && ::geteuid() != 0) return fail("it belongs to another user");
    return {};
}

// Two edits within one second each keep their backup.
Result<std::filesystem::path> backUp(const std::filesystem::path& file, const std::string& text,
                                     WallTime time) {
    const std::filesystem::path plain = backupURL(file, time);
    for (int i = 1; i <= kMostBackupsOfOneSecond; ++i) {
        std::filesystem::path backup = plain;
        if (i > 1) backup += fmt::format("-{}", i);
        const auto placed = TRY(replaceFileHolding(backup, std::nullopt, text));
        if (placed == Replacement::done) return backup;
    }
    return fail(fmt::format("there are too many backups like {}", plain.string()));
}

}  // namespace

std::filesystem::path backupURL(const std::filesystem::path& file, WallTime time) {
    return fmt::format("{}.backup-{:%Y-%m-%dT%H-%M-%SZ}", file.string(),
                       fmt::gmtime(std::chrono::system_clock::to_time_t(time)));
}

Result<std::optional<std::string>> readSettings(const std::filesystem::path& file,
                                                std::size_t limit) {
    struct stat info{};
    if (::stat(file.c_str(), &info) != 0 && errno == ENOENT) return std::nullopt;
    return TRY(readFile(file, limit));
}

Result<std::optional<std::filesystem::path>> editSettings(const SettingsEdit& edit, Clock& clock) {
    for (int attempt = 0; attempt < kMostAttempts; ++attempt) {
        const auto before = readSettings(edit.file);
        if (!before) return prefixed(edit.cannotBackUp, before.error());
        const std::string after = TRY(edit.merge(*before));
        std::optional<std::filesystem::path> backup;
        if (*before) {
            if (auto may = mayWrite(edit.file); !may)
                return prefixed(edit.cannotWrite, may.error());
            auto made = backUp(edit.file, **before, clock.wallNow());
            if (!made) return prefixed(edit.cannotBackUp, made.error());
            backup = *std::move(made);
        }
        const auto replaced = replaceFileHolding(edit.file, *before, after);
        if (!replaced) return prefixed(edit.cannotWrite, replaced.error());
        if (*replaced == Replacement::changedMeanwhile) continue;
        const auto there = readSettings(edit.file);
        if (there && *there == after) return backup;
    }
    return fail(edit.cannotWrite + "another program keeps changing the file");
}

std::string savedAs(const std::optional<std::filesystem::path>& backup) {
    if (!backup) return "";
    return " (previous settings saved as " + backup->filename().string() + ")";
}

}  // namespace tandrel
