#include "platform/linux/window_owner.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <filesystem>
#include <string_view>

#include "base/file.h"
#include "base/unicode.h"

namespace tandrel {
namespace {

constexpr std::size_t kLongestName = 1024;  // bytes

// Programs that take part in AirPlay screen mirroring and show it in a window.
constexpr std::array<std::string_view, 2> kReceivers = {"uxplay", "rpiplay"};
constexpr const char* kOwnProgram = "tandrel-app";

bool isReceiver(const std::string& program) {
    return std::ranges::find(kReceivers, lowerCased(program)) != kReceivers.end();
}

}  // namespace

WindowOwner windowOwner(const OwnerTraits& traits) {
    if (isReceiver(traits.program)) {
        return {"AirPlay receiver (" + traits.program + ")", ""};
    }
    if (traits.program == kOwnProgram && traits.role == kVirtualPhoneRole) {
        return {"iPhone Mirroring", "com.apple.ScreenContinuity"};
    }
    return {traits.program.empty() ? traits.windowClass : traits.program, ""};
}

std::optional<bool> isReceiverRunning() {
    std::error_code error;
    for (std::filesystem::directory_iterator entry("/proc", error), end; !error && entry != end;
         entry.increment(error)) {
        const std::string name = entry->path().filename().string();
        pid_t pid = 0;
        const auto [rest, bad] = std::from_chars(name.data(), name.data() + name.size(), pid);
        if (bad != std::errc() || rest != name.data() + name.size()) continue;
        if (isReceiver(programOf(pid))) return true;
    }
    return error ? std::nullopt : std::optional(false);
}

std::string programOf(pid_t pid) {
    if (pid <= 0) return {};
    const auto folder = std::filesystem::path("/proc") / std::to_string(pid);
    std::error_code error;
    const auto program = std::filesystem::read_symlink(folder / "exe", error);
    // A program that was replaced while it runs is told as "/path/name (deleted)".
    constexpr std::string_view deleted = " (deleted)";
    std::string name = program.filename().string();
    if (name.ends_with(deleted)) name.resize(name.size() - deleted.size());
    if (!error && !name.empty()) return name;
    auto comm = readFile(folder / "comm", kLongestName);
    return comm ? trimmed(*comm) : std::string();
}

}  // namespace tandrel
