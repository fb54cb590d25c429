#pragma once

#include "platform/processes.h"

namespace tandrel {

// Processes by posix_spawn(3). Each child leads a session of its own with no signal blocked and no
// file but its standard ones, so that the whole of it can be ended; a descendant that makes yet
// another session (a daemon) is not followed.
class ChildProcesses final : public Processes {
 public:
    // How long a program may take to end after SIGTERM before SIGKILL: it may be writing a file.
    static constexpr Duration kGrace = std::chrono::seconds(2);

    Result<ProgramEnd> run(const ProgramRun& run) override;
    Result<void> startDetached(const std::string& program,
                               const std::vector<std::string>& arguments) override;
};

}  // namespace tandrel
