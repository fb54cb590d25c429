#include "platform/linux/proc_running_applications.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <charconv>
#include <csignal>
#include <filesystem>
#include <optional>
#include <string_view>

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include "base/file.h"
#include "base/file_descriptor.h"

// glibc 2.36 declares these functions without C linkage.
extern "C" {
#include <sys/pidfd.h>
}

namespace tandrel {
namespace {

struct KnownApplication {
    std::string_view executable;
    std::string_view name;
    std::string_view bundleIdentifier;
};

// clang-format off
constexpr std::array kKnownPrograms{
    //                executable        name              bundle identifier
    KnownApplication{"tandrel-app",    "Tandrel",        "com.mossgate.tandrel"},
    KnownApplication{"tandrel-mirror", "Tandrel Mirror", "com.mossgate.tandrel-mirror"},
    KnownApplication{"pocketlink",     "PocketLink",     "ai.far-reach.pocketlink"},
    KnownApplication{"claude-desktop", "Claude",         "com.anthropic.claudefordesktop"},
};
// clang-format on

// The kernel adds this to the name of an executable that was replaced while it runs.
constexpr std::string_view kDeleted = " (deleted)";

bool isOwn(const std::filesystem::path& process) {
    struct stat info{};
    return ::stat(process.c_str(), &info) == 0 && info.st_uid == ::geteuid();
}

const KnownApplication* applicationOf(const std::filesystem::path& process) {
    std::error_code error;
    std::string name = std::filesystem::read_symlink(process / "exe", error).filename();
    if (name.ends_with(kDeleted)) name.resize(name.size() - kDeleted.size());
    const auto found = std::ranges::find(kKnownPrograms, name, &KnownApplication::executable);
    return found == kKnownPrograms.end() || !isOwn(process) ? nullptr : &*found;
}

// Ticks since boot at which the process began: field 22 of /proc/PID/stat, counted after the
// program's name, which may itself hold blanks and parentheses (proc(5)).
std::optional<unsigned long long> startTime(const std::filesystem::path& process) {
    constexpr std::size_t kLargestStat = 4096;
    constexpr int kFieldsBetween = 20;  // from the name to the start time
    const auto text = readFile(process / "stat", kLargestStat);
    if (!text) return std::nullopt;
    std::size_t at = text->rfind(')');
    for (int i = 0; i < kFieldsBetween && at != std::string::npos; ++i)
        at = text->find(' ', at + 1);
    if (at == std::string::npos) return std::nullopt;
    unsigned long long ticks = 0;
    const auto parsed = std::from_chars(text->data() + at + 1, text->data() + text->size(), ticks);
    if (parsed.ec != std::errc()) return std::nullopt;
    return ticks;
}

std::optional<int> processNumber(const std::filesystem::path& process) {
    const std::string name = process.filename();
    int number = 0;
    const auto parsed = std::from_chars(name.data(), name.data() + name.size(), number);
    if (parsed.ec != std::errc() || parsed.ptr != name.data() + name.size()) return std::nullopt;
    return number;
}

// The handle is taken before the process is looked at again, so the signal reaches what was looked
// at or nothing.
bool sendSignal(const RunningApplication& application, int signal) {
    const FileDescriptor process(::pidfd_open(application.pid, 0));
    if (!process) return errno == ESRCH;
    const auto* known = applicationOf(fmt::format("/proc/{}", application.pid));
    if (known == nullptr || known->bundleIdentifier != application.bundleIdentifier) return true;
    return ::pidfd_send_signal(process.get(), signal, nullptr, 0) == 0 || errno == ESRCH;
}

}  // namespace

std::vector<RunningApplication> ProcRunningApplications::others() {
    struct Found {
        unsigned long long started = 0;
        RunningApplication application;
    };
    std::vector<Found> found;
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const auto& process = entry->path();
        const auto pid = processNumber(process);
        if (!pid || *pid == ::getpid()) continue;
        const auto* known = applicationOf(process);
        const auto started = known == nullptr ? std::nullopt : startTime(process);
        if (!started) continue;
        found.push_back(
            {*started, {*pid, std::string(known->name), std::string(known->bundleIdentifier)}});
    }
    std::ranges::sort(found, {},
                      [](const Found& one) { return std::pair(one.started, one.application.pid); });
    std::vector<RunningApplication> result;
    for (Found& one : found) result.push_back(std::move(one.application));
    return result;
}

bool ProcRunningApplications::terminate(const RunningApplication& application) {
    return sendSignal(application, SIGTERM);
}

bool ProcRunningApplications::forceTerminate(const RunningApplication& application) {
    return sendSignal(application, SIGKILL);
}

}  // namespace tandrel
