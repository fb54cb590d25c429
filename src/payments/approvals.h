#pragma once

#include <cstdio>
#include <deque>
#include <filesystem>
#include <optional>
#include <string>

#include "base/result.h"

namespace tandrel {

// One record of the approvals log.
struct Approval {
    std::string at;  // ISO 8601, UTC
    std::string event;
    std::string detail;
    std::optional<std::string> why = {};
    std::optional<std::string> rule = {};  // of the guard's second layer

    bool operator==(const Approval&) const = default;
};

struct Approvals {
    std::deque<Approval> newest;  // in the order of the log
    std::size_t older = 0;        // records before these
    std::size_t unreadable = 0;   // lines that are torn, foreign or too long
};

// The last `most` records of the log. One that does not exist yet is an empty one; the error says
// why it cannot be read.
Result<Approvals> readApprovals(const std::filesystem::path& path, std::size_t most);

enum class ApprovalsFormat { table, json };

// Prints the owner's past answers from the approvals log, newest last. As JSON: {"approvals": the
// records in that order, "unreadable": how many lines were none}. Lines that are torn, foreign or
// too long are skipped and counted. Needs the same memory however long the log is. 0, or 1 when the
// file is there and cannot be read; a log that does not exist yet is an empty one.
int printApprovals(const std::filesystem::path& path, ApprovalsFormat format,
                   std::FILE* out = stdout);

}  // namespace tandrel
