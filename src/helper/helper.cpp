#include "helper/helper.h"

#include <csignal>
#include <cstdio>

#include <unistd.h>

#include "base/app_info.h"
#include "helper/conversation.h"

namespace tandrel {
namespace {

constexpr const char* kUsage =
    "usage: tandrel mcp         serve an AI app over standard input and output (Model Context "
    "Protocol)\n"
    "       tandrel --version   print the version\n"
    "       tandrel --help      print this\n";

std::string version() { return AppInfo::ofThisProgram().version; }

}  // namespace

int runHelper(const std::vector<std::string>& arguments) {
    const std::string command = arguments.size() == 1 ? arguments.front() : "";
    if (command == "--version") {
        std::printf("tandrel %s\n", version().c_str());
        return 0;
    }
    if (command == "--help") {
        std::fputs(kUsage, stdout);
        return 0;
    }
    if (command == "mcp") {
        // An app that no longer reads is noticed by the failing write.
        std::signal(SIGPIPE, SIG_IGN);
        converse(STDIN_FILENO, STDOUT_FILENO, version());
        return 0;
    }
    std::fputs(kUsage, stderr);
    return 2;
}

}  // namespace tandrel
