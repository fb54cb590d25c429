#include "app/installer.h"

#include <algorithm>

#include <fmt/chrono.h>
#include <fmt/format.h>
#include <unistd.h>

#include "app/trash.h"
#include "base/file.h"
#include "base/log.h"
#include "base/paths.h"
#include "platform/linux/desktop_entry.h"

namespace tandrel {
namespace {

namespace fs = std::filesystem;

// Of an app directory; one that is a build folder holds much besides.
constexpr const char* kPrograms[] = {"tandrel-app", "tandrel"};
constexpr const char* kIcon = "share/icons/hicolor/scalable/apps/tandrel.svg";

// Goes, with what is in it, unless it was renamed meanwhile.
class NewFolder {
 public:
    static Result<NewFolder> beside(const fs::path& target) {
        std::error_code error;
        fs::create_directories(target.parent_path(), error);
        if (error) return fail(error.message());
        std::string name = target.string() + ".XXXXXX";
        if (::mkdtemp(name.data()) == nullptr) return fail(systemError(errno));
        return NewFolder(name);
    }
    ~NewFolder() {
        std::error_code ignored;
        if (!path_.empty()) fs::remove_all(path_, ignored);
    }
    NewFolder(NewFolder&& other) noexcept : path_(std::move(other.path_)) { other.path_.clear(); }
    NewFolder& operator=(NewFolder&&) = delete;
    NewFolder(const NewFolder&) = delete;
    NewFolder& operator=(const NewFolder&) = delete;
    const fs::path& path() const { return path_; }
    void keep() { path_.clear(); }

 private:
    explicit NewFolder(fs::path path) : path_(std::move(path)) {}
    fs::path path_;
};

}  // namespace

Installer::Places Installer::Places::ofThisUser() {
    return {.applications = homeFolder() / ".local/opt", .dataHome = tandrel::dataHome()};
}

bool Installer::isInPassing(const fs::path& bundle, const fs::path& home) {
    const fs::path places[] = {"/tmp", "/var/tmp",   "/media",
                               "/mnt", "/run/media", home / "Downloads"};
    return std::ranges::any_of(places, [&](const fs::path& place) {
        const fs::path within = bundle.lexically_normal().lexically_relative(place);
        return !within.empty() && *within.begin() != "..";
    });
}

// The new copy is whole before the old one goes, so that there is always one to start.
Result<void> Installer::copy() const {
    NewFolder beside = TRY(NewFolder::beside(destination()));
    std::error_code error;
    fs::create_directories(beside.path() / "bin", error);
    for (const char* program : kPrograms) {
        if (error) break;
        fs::copy_file(info_.bundle / "bin" / program, beside.path() / "bin" / program, error);
    }
    if (!error) {
        fs::copy(info_.bundle / "share", beside.path() / "share", fs::copy_options::recursive,
                 error);
    }
    if (!error) {
        constexpr auto kForAll = fs::perms(0755);
        fs::permissions(beside.path(), kForAll, error);
    }
    if (error) return fail(error.message());
    if (fs::exists(fs::symlink_status(destination(), error))) {
        TRY_VOID(moveToTrash(destination(), places_.dataHome / "Trash", clock_));
    }
    fs::rename(beside.path(), destination(), error);
    if (error) return fail(error.message());
    beside.keep();
    return {};
}

Result<void> Installer::addToMenu() const {
    const fs::path icon = places_.dataHome / "icons/hicolor/scalable/apps/tandrel.svg";
    constexpr std::size_t kLargestIcon = 256 * 1024;
    if (const auto drawing = readFile(destination() / kIcon, kLargestIcon)) {
        TRY_VOID(replaceFile(icon, *drawing));
    }
    const DesktopEntry entry{.name = "Tandrel",
                             .comment = "Lets your AI see and operate your iPhone",
                             .program = destination() / "bin/tandrel-app",
                             .icon = "tandrel"};
    return replaceFile(places_.dataHome / "applications/tandrel.desktop", entry.text());
}

std::optional<std::string> Installer::moveToApplications() {
    log("installer: moving from " + info_.bundle.string());
    std::error_code error;
    if (fs::equivalent(info_.bundle, destination(), error)) return std::nullopt;
    if (const auto copied = copy(); !copied) {
        return fmt::format(
            "Couldn't copy to Applications ({}). Drag Tandrel into Applications in Finder instead.",
            copied.error().message);
    }
    // Without an entry in the menu the application is there all the same.
    if (const auto added = addToMenu(); !added) log("installer: " + added.error().message);
    const auto started = processes_.startDetached(destination() / "bin/tandrel-app", {});
    if (!started) return started.error().message;
    return std::nullopt;
}

Result<void> Installer::relaunch(int afterSeconds) {
    return processes_.startDetached("/bin/sh",
                                    {"-c", fmt::format("sleep {}; exec \"$0\"", afterSeconds),
                                     (info_.bundle / "bin/tandrel-app").string()});
}

}  // namespace tandrel
