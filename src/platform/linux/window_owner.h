#pragma once

#include <optional>
#include <string>

#include <sys/types.h>

namespace tandrel {

// The application behind a window.
struct WindowOwner {
    std::string name;
    std::string bundle;  // empty when unknown

    bool operator==(const WindowOwner&) const = default;
};

// What an application is told by: a window's title and class are chosen by whoever draws it, its
// process is not.
struct OwnerTraits {
    std::string program;      // the process's program, without its folder; empty when unknown
    std::string windowClass;  // WM_CLASS's second text
    std::string role;         // WM_WINDOW_ROLE
};

// Known receivers and mirroring programs get names by which they are found.
WindowOwner windowOwner(const OwnerTraits& traits);

// The program that a process runs; empty when there is none or it is hidden.
std::string programOf(pid_t pid);

// Whether any program that is known as an AirPlay receiver runs; nothing when processes are hidden.
std::optional<bool> isReceiverRunning();

// The role by which our own windows of virtual phones are known.
inline constexpr const char* kVirtualPhoneRole = "virtual-iphone";

}  // namespace tandrel
