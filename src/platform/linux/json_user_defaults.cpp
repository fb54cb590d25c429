#include "platform/linux/json_user_defaults.h"

#include <cerrno>
#include <cstdio>
#include <system_error>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/file.h>
#include <unistd.h>

#include "base/file.h"
#include "base/file_descriptor.h"
#include "base/log.h"
#include "base/unicode.h"

namespace tandrel {
namespace {

constexpr int kIndent = 4;
constexpr Duration kLockRetry = std::chrono::milliseconds(5);

Result<Json> parseSettings(std::string_view text) {
    Json settings = TRY(parseJson(text));
    if (!settings.is_object()) return fail("it is not a JSON object");
    return settings;
}

// Held while it lives; between processes and between objects of one process.
Result<FileDescriptor> lockSettings(const std::filesystem::path& path, Clock& clock) {
    std::error_code error;
    std::filesystem::create_directories(path.parent_path(), error);
    const std::string name = path.string() + ".lock";
    FileDescriptor file(::open(name.c_str(), O_RDWR | O_CREAT | O_CLOEXEC | O_NOFOLLOW, 0600));
    if (!file) return fail(fmt::format("can't keep the setting: {}: {}", name, systemError(errno)));
    const TimePoint deadline = clock.now() + JsonUserDefaults::kLongestLockWait;
    while (::flock(file.get(), LOCK_EX | LOCK_NB) != 0) {
        if (errno != EWOULDBLOCK && errno != EINTR) {
            return fail(fmt::format("can't keep the setting: {}: {}", name, systemError(errno)));
        }
        if (clock.now() >= deadline) {
            return fail(fmt::format("can't keep the setting: another program holds {}", name));
        }
        clock.sleepFor(kLockRetry);
    }
    return file;
}

// A second name for the same file where the file system has them, else the file moves there.
bool nameAlso(const std::filesystem::path& file, const std::filesystem::path& other) {
    if (::link(file.c_str(), other.c_str()) == 0) return true;
    if (errno == EEXIST) return false;
    return ::renameat2(AT_FDCWD, file.c_str(), AT_FDCWD, other.c_str(), RENAME_NOREPLACE) == 0;
}

Result<void> keepBroken(const std::filesystem::path& path, std::string_view why) {
    std::error_code error;
    const std::filesystem::path file = std::filesystem::canonical(path, error);
    if (error) return fail(fmt::format("can't follow {}: {}", path.string(), error.message()));
    for (int i = 1; i <= JsonUserDefaults::kMostBroken; ++i) {
        const std::string suffix = i == 1 ? ".broken" : fmt::format(".broken-{}", i);
        const std::filesystem::path other = file.string() + suffix;
        if (nameAlso(file, other)) {
            log(fmt::format("settings: {} can't be read as settings ({}); kept as {}",
                            file.string(), why, other.string()));
            return {};
        }
        if (errno != EEXIST) {
            return fail(
                fmt::format("can't keep the broken {}: {}", file.string(), systemError(errno)));
        }
    }
    return fail(
        fmt::format("can't keep the setting: too many broken copies beside {}", file.string()));
}

}  // namespace

JsonUserDefaults::JsonUserDefaults(std::filesystem::path file, Clock& clock)
    : path_(std::move(file)), clock_(clock), latest_(std::make_shared<Snapshot>()) {}

std::optional<bool> JsonUserDefaults::boolValue(std::string_view key) const {
    return boolMember(snapshot()->settings, key);
}

std::optional<std::string> JsonUserDefaults::textValue(std::string_view key) const {
    return textMember(snapshot()->settings, key);
}

Result<void> JsonUserDefaults::set(std::string_view key, bool value) { return change(key, value); }

Result<void> JsonUserDefaults::set(std::string_view key, std::string value) {
    if (!isUtf8(value)) return fail("can't keep the setting: its text is not UTF-8");
    return change(key, std::move(value));
}

// Reads the file only when it changed, since every request asks.
std::shared_ptr<const JsonUserDefaults::Snapshot> JsonUserDefaults::snapshot() const {
    const FileStamp stamp = FileStamp::of(path_);
    std::shared_ptr<const Snapshot> before;
    {
        MutexLock lock(mutex_);
        before = latest_;
    }
    if (before->stamp.stillHolds(stamp)) return before;

    auto now = std::make_shared<Snapshot>();
    now->stamp = stamp;
    if (stamp.exists() && stamp.size > 0) {
        const auto text = readFile(path_, kLargestFile);
        auto settings = text ? parseSettings(*text) : fail(text.error().message);
        if (settings) {
            now->settings = *std::move(settings);
        } else if (!before->stamp.looksLike(stamp)) {
            log(fmt::format("settings: {} counts as empty: {}", path_.string(),
                            settings.error().message));
        }
    }
    MutexLock lock(mutex_);
    latest_ = now;
    return now;
}

Result<void> JsonUserDefaults::change(std::string_view key, Json value) {
    if (!isUtf8(key)) return fail("can't keep the setting: its name is not UTF-8");
    const FileDescriptor lock = TRY(lockSettings(path_, clock_));
    Json settings = TRY(settingsToChange());
    settings[std::string(key)] = std::move(value);
    const std::string text =
        settings.dump(kIndent, ' ', false, Json::error_handler_t::replace) + "\n";
    if (text.size() > kLargestFile) return fail("can't keep the setting: there would be too many");
    return replaceFile(path_, text);
}

// What the file holds now. A file that cannot be read at all is left alone with an error; one that
// holds something else than settings is kept under another name.
Result<Json> JsonUserDefaults::settingsToChange() const {
    std::error_code error;
    const auto status = std::filesystem::status(path_, error);
    if (status.type() == std::filesystem::file_type::not_found) return Json::object();
    if (std::filesystem::is_regular_file(status)) {
        const auto size = std::filesystem::file_size(path_, error);
        if (!error && size == 0) return Json::object();
        if (!error && size > kLargestFile) {
            TRY_VOID(keepBroken(path_, fmt::format("it is larger than {} bytes", kLargestFile)));
            return Json::object();
        }
    }
    const std::string text = TRY(readFile(path_, kLargestFile));
    auto settings = parseSettings(text);
    if (settings) return settings;
    TRY_VOID(keepBroken(path_, settings.error().message));
    return Json::object();
}

}  // namespace tandrel
