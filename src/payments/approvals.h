#pragma once

#include <cstdio>
#include <filesystem>

namespace tandrel {

enum class ApprovalsFormat { table, json };

// Prints the owner's past answers from the approvals log, newest last. As JSON: {"approvals": the
// records in that order, "unreadable": how many lines were none}. Lines that are torn, foreign or
// too long are skipped and counted. Needs the same memory however long the log is. 0, or 1 when the
// file is there and cannot be read; a log that does not exist yet is an empty one.
int printApprovals(const std::filesystem::path& path, ApprovalsFormat format,
                   std::FILE* out = stdout);

}  // namespace tandrel
