#pragma once

#include <filesystem>

#include "base/clock.h"
#include "base/result.h"

namespace tandrel {

// Moves a file or folder into the trash folder, from where the desktop can put it back
// (freedesktop.org Trash specification 1.0). Both lie on one file system.
Result<void> moveToTrash(const std::filesystem::path& what, const std::filesystem::path& trash,
                         Clock& clock);

}  // namespace tandrel
