#pragma once

#include <csignal>
#include <fstream>
#include <stdexcept>
#include <string>

#include "support/child_program.h"
#include "support/environment_variable.h"
#include "support/temporary_folder.h"

namespace tandrel {

// A message bus of the test's own, which takes the place of the system's while it lives.
class PrivateBus {
 public:
    // `extraPolicy`: rules in the form of dbus-daemon(1), after those that allow everything.
    explicit PrivateBus(const std::string& extraPolicy = "")
        : daemon_({"/usr/bin/dbus-daemon", "--nofork", "--print-address", "--config-file",
                   configuration(extraPolicy)},
                  {}) {
        if (!daemon_.awaitOutput("\n")) throw std::runtime_error("no bus: " + daemon_.output());
    }

    std::string address() const { return "unix:path=" + socket(); }
    void stop() {
        daemon_.signal(SIGTERM);
        daemon_.wait();
    }

 private:
    std::string socket() const { return folder_.path() / "bus"; }

    std::string configuration(const std::string& extraPolicy) const {
        const std::string file = folder_.path() / "bus.conf";
        std::ofstream(file) << "<busconfig><listen>unix:path=" << socket() << "</listen>"
                            << "<policy context='default'><allow send_destination='*'/>"
                            << "<allow receive_sender='*'/><allow own='*'/><allow user='*'/>"
                            << extraPolicy << "</policy></busconfig>";
        return file;
    }

    const TemporaryFolder folder_;
    ChildProgram daemon_;
    const EnvironmentVariable asSystemBus_{"DBUS_SYSTEM_BUS_ADDRESS", address()};
};

}  // namespace tandrel
