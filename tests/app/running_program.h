#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "base/app_info.h"
#include "http/client.h"
#include "support/child_program.h"
#include "support/temporary_folder.h"

namespace tandrel {

// The environment of a program that meets nothing of the person's own: free ports, this folder for
// a home, no display. `more` adds to it or replaces; an empty value takes a variable away.
ChildProgram::Environment plainEnvironment(const std::filesystem::path& home,
                                           const ChildProgram::Environment& more = {});

// The application, run with these arguments to its end.
ProgramResult runApp(const std::vector<std::string>& arguments, const std::filesystem::path& home,
                     const ChildProgram::Environment& more = {});
// It as it was built, with what it draws.
AppInfo builtApp();

// The application program as a process of its own, serving on ports that it found free.
class RunningProgram {
 public:
    static const std::string kPath;

    // Blocks until the program has said that it runs. Two programs with one `home` are two copies
    // that one person starts.
    explicit RunningProgram(
        const ChildProgram::Environment& more = {}, const std::vector<std::string>& arguments = {},
        std::shared_ptr<TemporaryFolder> home = std::make_shared<TemporaryFolder>());

    // Fails the test that asks when the program serves nothing.
    ClientResponse get(const std::string& target) const;
    ClientResponse post(const std::string& target, const Json& body) const;
    std::uint16_t port() const { return url_.port; }

    // Blocks until /status fits, and throws when it does not come to that.
    using Fits = std::function<bool(const Json& reply)>;
    void awaitStatus(const Fits& fits) const;
    // The only phone is a matched one with a picture, or just one with a picture.
    void awaitMatched() const;
    void awaitPicture() const;

    // Blocks until a line of the only phone's screen reads like this.
    void awaitText(const std::string& text) const;

    ChildProgram& process() { return process_; }
    const std::filesystem::path& home() const { return home_->path(); }
    const std::shared_ptr<TemporaryFolder>& homeFolder() const { return home_; }
    std::filesystem::path stateFile() const { return home() / ".local/state/tandrel/engine.json"; }

 private:
    void awaitReply(const std::string& target, const Fits& fits) const;

    const std::shared_ptr<TemporaryFolder> home_;
    ChildProgram process_;
    LoopbackUrl url_;
};

}  // namespace tandrel
