#pragma once

#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "base/clock.h"
#include "base/result.h"

// Editing settings files that belong to other applications.
namespace tandrel {

// Larger than any settings a person has; a file beyond it is left alone.
inline constexpr std::size_t kLargestSettings = 1024 * 1024;

// The name of a backup made at `time`: beside the file, with the time in UTC as ISO 8601 and "-"
// for
// ":", such as "config.toml.backup-2026-01-31T09-15-00Z".
std::filesystem::path backupURL(const std::filesystem::path& file, WallTime time);

// The file's text; nothing when there is none. A symbolic link to nothing counts as no file.
Result<std::optional<std::string>> readSettings(const std::filesystem::path& file,
                                                std::size_t limit = kLargestSettings);

struct SettingsEdit {
    std::filesystem::path file;
    // The whole new text for the text that is there. Called again when another program changed the
    // file meanwhile. Its error is passed on unchanged and leaves the file as it is.
    std::function<Result<std::string>(const std::optional<std::string>& text)> merge;
    std::string cannotBackUp;  // begins the error when the old file cannot be read or backed up
    std::string cannotWrite;   // begins the error when the new text cannot be put in place
};

// Keeps a backup of the file and replaces it as a whole, so that at any moment the file holds the
// old text or the new. A link is followed; mode and owner stay. What another program writes
// meanwhile is read and merged again, never overwritten. The backup's path; nothing when there was
// no file.
Result<std::optional<std::filesystem::path>> editSettings(const SettingsEdit& edit, Clock& clock);

// The words that name the backup after "Added"; none without one.
std::string savedAs(const std::optional<std::filesystem::path>& backup);

}  // namespace tandrel
