#pragma once

#include <string>
#include <vector>

// The owner's running applications.
namespace tandrel {

struct RunningApplication {
    int pid = 0;
    std::string name;              // for people
    std::string bundleIdentifier;  // reverse-DNS; empty when unknown
};

class RunningApplications {
 public:
    virtual ~RunningApplications() = default;
    // This user's, this process excluded, in order of start.
    virtual std::vector<RunningApplication> others() = 0;
    // Asks it to end; false when the request was refused.
    virtual bool terminate(const RunningApplication& application) = 0;
    virtual bool forceTerminate(const RunningApplication& application) = 0;
};

}  // namespace tandrel
