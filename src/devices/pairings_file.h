#pragma once

#include <filesystem>
#include <map>
#include <string>

#include "base/result.h"
#include "base/uuid.h"

namespace tandrel {

// Which Bluetooth host drives which screen, by the screen's identifier.
using Pairings = std::map<std::string, Uuid>;

// A missing file means no pairings, and so does one that cannot be read; entries that are not a
// UUID are left out.
Pairings loadPairings(const std::filesystem::path& file);
Result<void> storePairings(const std::filesystem::path& file, const Pairings& pairings);

}  // namespace tandrel
