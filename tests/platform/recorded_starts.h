#pragma once

#include "platform/processes.h"

namespace tandrel {

// Starts nothing and keeps what should have been started last, the program first.
class RecordedStarts final : public Processes {
 public:
    Result<ProgramEnd> run(const ProgramRun&) override { return fail("not for this test"); }
    Result<void> startDetached(const std::string& program,
                               const std::vector<std::string>& arguments) override {
        started = arguments;
        started.insert(started.begin(), program);
        return {};
    }
    std::vector<std::string> started;
};

}  // namespace tandrel
