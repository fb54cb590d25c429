#pragma once

#include "platform/running_applications.h"

namespace tandrel {

// This user's processes whose executable is one of the applications known by name: "tandrel-app",
// "tandrel-mirror", "pocketlink", "claude-desktop". A request goes to the process that was listed
// or to none: a process number that has passed on to another program in the meantime is not
// touched.
class ProcRunningApplications final : public RunningApplications {
 public:
    std::vector<RunningApplication> others() override;
    // By SIGTERM. An application that has ended on its own counts as one that agreed.
    bool terminate(const RunningApplication& application) override;
    bool forceTerminate(const RunningApplication& application) override;  // by SIGKILL
};

}  // namespace tandrel
