#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include <sys/types.h>

#include "base/clock.h"
#include "base/file_descriptor.h"
#include "base/result.h"
#include "platform/linux/started_program.h"

namespace tandrel {

// A receiver program that runs: writes frames into a pipe of its own, its descriptor 3, and what it
// has to say into another. It ends with this process, however that ends.
class ReceiverChild {
 public:
    static Result<ReceiverChild> start(const std::filesystem::path& program,
                                       std::vector<std::string> arguments);
    // Ends it and whatever it started that has not left its session: asks, and after kGrace
    // insists.
    ~ReceiverChild();
    ReceiverChild(ReceiverChild&&) noexcept = default;
    ReceiverChild& operator=(ReceiverChild&&) = delete;
    ReceiverChild(const ReceiverChild&) = delete;
    ReceiverChild& operator=(const ReceiverChild&) = delete;

    static constexpr Duration kGrace = std::chrono::seconds(2);

    pid_t pid() const { return program_.pid(); }
    // Never block a reader. `end` becomes readable when the program has ended.
    int frames() const { return frames_.get(); }
    int words() const { return words_.get(); }
    int end() const { return program_.end(); }

 private:
    ReceiverChild(StartedProgram program, FileDescriptor frames, FileDescriptor words);

    StartedProgram program_;
    FileDescriptor frames_;
    FileDescriptor words_;
};

// Where a program lies: `name` itself when it is a path, else the first on the search path; empty
// when there is none.
std::filesystem::path findProgram(const std::string& name);

// Whether any TCP connection of that process is established now. Unknown counts as yes.
bool hasTcpConnection(pid_t pid);

}  // namespace tandrel
