#pragma once

#include <map>
#include <optional>
#include <string>
#include <vector>

#include <sys/types.h>

namespace tandrel {

// A program started by a test, its standard output and error read as one text. Killed at the end if
// it still runs. Waits are bounded generously; reaching a bound is a failure, not a timing.
class ChildProgram {
 public:
    using Environment = std::map<std::string, std::string>;

    // Runs `arguments` (the program first) with exactly this environment.
    ChildProgram(const std::vector<std::string>& arguments, const Environment& environment);
    ~ChildProgram();
    ChildProgram(const ChildProgram&) = delete;
    ChildProgram& operator=(const ChildProgram&) = delete;

    // Blocks until `text` has been printed; false when the program ended before.
    bool awaitOutput(const std::string& text);
    void signal(int number) const;
    // Blocks until the program has ended; its exit status, or minus the signal that ended it.
    int wait();
    const std::string& output() const { return output_; }
    pid_t pid() const { return pid_; }

 private:
    bool readMore();

    pid_t pid_ = -1;
    int pipe_ = -1;
    std::string output_;
    std::optional<int> status_;
};

// What a program prints and returns.
struct ProgramResult {
    int status = 0;
    std::string output;
};
ProgramResult runProgramToEnd(const std::vector<std::string>& arguments,
                              const ChildProgram::Environment& environment);

}  // namespace tandrel
