#include "platform/linux/receiver_child.h"

#include <algorithm>
#include <csignal>
#include <fstream>
#include <set>
#include <sstream>
#include <utility>

#include <fcntl.h>
#include <poll.h>

#include "base/environment.h"
#include "base/file.h"

namespace tandrel {
namespace {

// The most that the kernel grants to anyone: a large frame comes in five reads instead of eighty.
constexpr int kPipeBytes = 1 << 20;
// Starts a program that gets a signal when its parent ends (util-linux).
constexpr const char* kSetpriv = "/usr/bin/setpriv";

bool hasEnded(int end, Duration patience) {
    pollfd wait{end, POLLIN, 0};
    const auto time = std::chrono::duration_cast<std::chrono::milliseconds>(patience).count();
    return ::poll(&wait, 1, static_cast<int>(time)) > 0;
}

// The numbers of the sockets that a process holds open.
std::set<std::string> socketsOf(const std::filesystem::path& folder) {
    std::set<std::string> sockets;
    std::error_code error;
    for (std::filesystem::directory_iterator entry(folder / "fd", error), end;
         !error && entry != end; entry.increment(error)) {
        std::error_code gone;
        const std::string target = std::filesystem::read_symlink(entry->path(), gone).string();
        constexpr std::string_view kind = "socket:[";
        if (target.starts_with(kind)) {
            sockets.insert(target.substr(kind.size(), target.size() - kind.size() - 1));
        }
    }
    return sockets;
}

}  // namespace

Result<ReceiverChild> ReceiverChild::start(const std::filesystem::path& program,
                                           std::vector<std::string> arguments) {
    ProgramPipe frames = TRY(ProgramPipe::open());
    ProgramPipe words = TRY(ProgramPipe::open());
    ::fcntl(frames.reading.get(), F_SETPIPE_SZ, kPipeBytes);
    ProgramStart how{.program = program,
                     .arguments = std::move(arguments),
                     .output = words.writing.get(),
                     .third = frames.writing.get()};
    if (isExecutableFile(kSetpriv)) {
        how.arguments.insert(how.arguments.begin(),
                             {"--pdeathsig", "TERM", "--", program.string()});
        how.program = kSetpriv;
    }
    return ReceiverChild(TRY(StartedProgram::start(how)), std::move(frames.reading),
                         std::move(words.reading));
}

ReceiverChild::ReceiverChild(StartedProgram program, FileDescriptor frames, FileDescriptor words)
    : program_(std::move(program)), frames_(std::move(frames)), words_(std::move(words)) {}

ReceiverChild::~ReceiverChild() {
    if (program_.pid() <= 0) return;
    program_.signalAll(SIGTERM);
    hasEnded(program_.end(), kGrace);
}

std::filesystem::path findProgram(const std::string& name) {
    if (name.find('/') != std::string::npos) return isExecutableFile(name) ? name : "";
    std::istringstream folders(environment("PATH").value_or("/usr/local/bin:/usr/bin:/bin"));
    for (std::string folder; std::getline(folders, folder, ':');) {
        const auto path = std::filesystem::path(folder) / name;
        if (path.is_absolute() && isExecutableFile(path)) return path;
    }
    return {};
}

bool hasTcpConnection(pid_t pid) {
    const auto folder = std::filesystem::path("/proc") / std::to_string(pid);
    const std::set<std::string> sockets = socketsOf(folder);
    bool isKnown = false;
    for (const char* table : {"net/tcp", "net/tcp6"}) {
        std::ifstream lines(folder / table);
        std::string line;
        isKnown = isKnown || static_cast<bool>(std::getline(lines, line));  // the titles
        // sl local remote state tx:rx tr:when retransmits uid timeout inode
        while (std::getline(lines, line)) {
            std::istringstream words(line);
            std::string slot, local, remote, state, queues, timer, retransmits, user, timeout,
                inode;
            words >> slot >> local >> remote >> state >> queues >> timer >> retransmits >> user >>
                timeout >> inode;
            constexpr std::string_view kEstablished = "01";
            if (state == kEstablished && sockets.contains(inode)) return true;
        }
    }
    return !isKnown;
}

}  // namespace tandrel
