#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/installed_applications.h"
#include "platform/processes.h"

namespace tandrel {

// Applications by their desktop entries (Desktop Entry Specification 1.5). Only those in the table
// of identifiers are known, since Linux applications carry none.
class DesktopApplications final : public InstalledApplications {
 public:
    // `dataFolders` hold "applications/NAME.desktop"; the first that has one wins.
    DesktopApplications(Processes& processes, std::vector<std::filesystem::path> dataFolders)
        : processes_(processes), dataFolders_(std::move(dataFolders)) {}

    // XDG_DATA_HOME, then XDG_DATA_DIRS.
    static std::vector<std::filesystem::path> dataFoldersOfThisUser();

    std::optional<InstalledApplication> find(std::string_view bundleIdentifier) override;
    Result<void> open(const InstalledApplication& application) override;

 private:
    Processes& processes_;
    const std::vector<std::filesystem::path> dataFolders_;
};

// The words of the command in a desktop entry's text, without the fields that stand for files.
// Nothing when the entry has no command or its quotes do not close.
std::optional<std::vector<std::string>> desktopCommand(std::string_view entry);

}  // namespace tandrel
