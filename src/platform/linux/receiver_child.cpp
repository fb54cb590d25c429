#include "platform/linux/receiver_child.h"

#include <algorithm>
#include <cerrno>
#include <csignal>
#include <fstream>
#include <set>
#include <sstream>
#include <utility>

#include <fcntl.h>
#include <fmt/format.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include "base/environment.h"
#include "base/file.h"

// glibc 2.36 declares these functions without C linkage.
extern "C" {
#include <sys/pidfd.h>
}

namespace tandrel {
namespace {

constexpr int kFramesDescriptor = 3;
// The most that the kernel grants to anyone: a large frame comes in five reads instead of eighty.
constexpr int kPipeBytes = 1 << 20;
// Starts a program that gets a signal when its parent ends (util-linux).
constexpr const char* kSetpriv = "/usr/bin/setpriv";

struct Pipe {
    FileDescriptor reading;
    FileDescriptor writing;

    static Result<Pipe> open() {
        int ends[2];
        if (::pipe2(ends, O_CLOEXEC) != 0) return fail("can't make a pipe: " + systemError(errno));
        ::fcntl(ends[0], F_SETFL, O_NONBLOCK);
        return Pipe{FileDescriptor(ends[0]), FileDescriptor(ends[1])};
    }
};

class SpawnSettings {
 public:
    SpawnSettings(int words, int frames) {
        posix_spawnattr_init(&attributes_);
        sigset_t signals;
        sigemptyset(&signals);
        posix_spawnattr_setsigmask(&attributes_, &signals);
        for (const int signal : {SIGHUP, SIGINT, SIGQUIT, SIGTERM, SIGPIPE, SIGCHLD}) {
            sigaddset(&signals, signal);
        }
        posix_spawnattr_setsigdefault(&attributes_, &signals);
        posix_spawnattr_setflags(
            &attributes_, POSIX_SPAWN_SETSID | POSIX_SPAWN_SETSIGMASK | POSIX_SPAWN_SETSIGDEF);
        posix_spawn_file_actions_init(&actions_);
        posix_spawn_file_actions_addopen(&actions_, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
        posix_spawn_file_actions_adddup2(&actions_, words, STDOUT_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, words, STDERR_FILENO);
        posix_spawn_file_actions_adddup2(&actions_, frames, kFramesDescriptor);
        posix_spawn_file_actions_addclosefrom_np(&actions_, kFramesDescriptor + 1);
    }
    ~SpawnSettings() {
        posix_spawn_file_actions_destroy(&actions_);
        posix_spawnattr_destroy(&attributes_);
    }
    SpawnSettings(const SpawnSettings&) = delete;
    SpawnSettings& operator=(const SpawnSettings&) = delete;

    int spawn(pid_t& pid, std::vector<std::string> words) const {
        std::vector<char*> pointers;
        for (std::string& word : words) pointers.push_back(word.data());
        pointers.push_back(nullptr);
        return ::posix_spawn(&pid, words.front().c_str(), &actions_, &attributes_, pointers.data(),
                             environ);
    }

 private:
    posix_spawnattr_t attributes_{};
    posix_spawn_file_actions_t actions_{};
};

std::vector<std::string> commandLine(const std::filesystem::path& program,
                                     const std::vector<std::string>& arguments) {
    std::vector<std::string> words;
    if (isExecutableFile(kSetpriv)) words = {kSetpriv, "--pdeathsig", "TERM", "--"};
    words.push_back(program.string());
    words.insert(words.end(), arguments.begin(), arguments.end());
    return words;
}

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
                                           const std::vector<std::string>& arguments) {
    Pipe frames = TRY(Pipe::open());
    Pipe words = TRY(Pipe::open());
    ::fcntl(frames.reading.get(), F_SETPIPE_SZ, kPipeBytes);
    const SpawnSettings settings(words.writing.get(), frames.writing.get());
    ReceiverChild child;
    if (const int error = settings.spawn(child.pid_, commandLine(program, arguments)); error != 0) {
        child.pid_ = -1;
        return fail(fmt::format("can't start {}: {}", program.string(), systemError(error)));
    }
    child.frames_ = std::move(frames.reading);
    child.words_ = std::move(words.reading);
    child.end_ = FileDescriptor(::pidfd_open(child.pid_, 0));
    if (!child.end_) return fail("can't watch " + program.string() + ": " + systemError(errno));
    return child;
}

ReceiverChild::ReceiverChild(ReceiverChild&& other) noexcept
    : pid_(std::exchange(other.pid_, -1)),
      frames_(std::move(other.frames_)),
      words_(std::move(other.words_)),
      end_(std::move(other.end_)) {}

ReceiverChild::~ReceiverChild() {
    if (pid_ <= 0) return;
    ::kill(-pid_, SIGTERM);
    if (end_) hasEnded(end_.get(), kGrace);
    ::kill(-pid_, SIGKILL);
    int status = 0;
    while (::waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
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
