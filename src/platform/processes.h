#pragma once

#include <filesystem>
#include <map>
#include <stop_token>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/result.h"

// Running other programs.
namespace tandrel {

struct ProgramRun {
    std::filesystem::path program;  // not looked for on the search path
    std::vector<std::string> arguments = {};
    Duration timeout = std::chrono::seconds(30);
    std::size_t mostOutput = 64 * 1024;  // bytes; what comes after is read and dropped
    std::map<std::string, std::string> environment = {};  // on top of this process's own
    std::stop_token stop = {};                            // cuts the time-out short
};

struct ProgramEnd {
    enum class How { exited, signalled, timedOut };
    How how = How::exited;
    int status = 0;      // the exit status; for `signalled` the signal's number
    std::string output;  // standard output and standard error in the order of writing
};

class Processes {
 public:
    virtual ~Processes() = default;

    // Runs the program with nothing on its standard input and without a terminal, and waits for its
    // end. At the time-out it is asked to end, then made to, with everything it started that has
    // not left its session. The error says why it could not be started. Any thread; blocks.
    virtual Result<ProgramEnd> run(const ProgramRun& run) = 0;

    // Starts a program that goes on when this one ends; nobody hears its output or its end. The
    // name may be one on the search path. The error says why nothing could be started; a program
    // that does not exist is not noticed.
    virtual Result<void> startDetached(const std::string& program,
                                       const std::vector<std::string>& arguments) = 0;
};

}  // namespace tandrel
