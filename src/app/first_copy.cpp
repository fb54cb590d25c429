#include "app/first_copy.h"

#include <cerrno>
#include <cstring>

#include <fmt/format.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include "base/environment.h"
#include "base/file.h"
#include "base/paths.h"

namespace tandrel {
namespace {

namespace fs = std::filesystem;

constexpr int kPatienceMilliseconds = 2000;
constexpr int kWaitingCopies = 8;
constexpr char kShown = '+';

Result<sockaddr_un> addressOf(const fs::path& place) {
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    const std::string path = place.string();
    if (path.size() >= sizeof address.sun_path) {
        return fail(fmt::format("{} is too long for a socket", path));
    }
    std::memcpy(address.sun_path, path.c_str(), path.size() + 1);
    return address;
}

FileDescriptor newSocket() {
    return FileDescriptor(::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0));
}

// A connection to whoever listens there; none when nobody does.
FileDescriptor connectTo(const fs::path& place) {
    const auto address = addressOf(place);
    FileDescriptor socket = newSocket();
    if (!address || !socket) return FileDescriptor(-1);
    const auto* generic = reinterpret_cast<const sockaddr*>(&*address);
    if (::connect(socket.get(), generic, sizeof *address) != 0) return FileDescriptor(-1);
    return socket;
}

bool isOwn(const FileDescriptor& connection) {
    ucred peer{};
    socklen_t length = sizeof peer;
    return ::getsockopt(connection.get(), SOL_SOCKET, SO_PEERCRED, &peer, &length) == 0 &&
           peer.uid == ::geteuid();
}

}  // namespace

fs::path FirstCopy::meetingPlace(std::uint16_t enginePort) {
    const fs::path runtime = environment("XDG_RUNTIME_DIR").value_or("");
    const fs::path folder = runtime.is_absolute() ? runtime : stateHome();
    return folder / "tandrel" / fmt::format("window-{}.sock", enginePort);
}

bool FirstCopy::ask(const fs::path& place) {
    const FileDescriptor connection = connectTo(place);
    if (!connection || !isOwn(connection)) return false;
    pollfd waiting{connection.get(), POLLIN, 0};
    char answer = 0;
    return ::poll(&waiting, 1, kPatienceMilliseconds) > 0 &&
           ::read(connection.get(), &answer, 1) == 1 && answer == kShown;
}

Result<std::unique_ptr<FirstCopy>> FirstCopy::listen(fs::path place, MainLoop& loop,
                                                     std::function<void()> show) {
    const sockaddr_un address = TRY(addressOf(place));
    if (connectTo(place)) return fail("another copy listens at " + place.string());
    std::error_code error;
    fs::create_directories(place.parent_path(), error);
    // What nobody listens at was left by a copy that was killed.
    fs::remove(place, error);
    FileDescriptor socket = newSocket();
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    if (!socket || ::bind(socket.get(), generic, sizeof address) != 0 ||
        ::chmod(place.c_str(), S_IRUSR | S_IWUSR) != 0 ||
        ::listen(socket.get(), kWaitingCopies) != 0) {
        return fail(fmt::format("can't listen at {}: {}", place.string(), systemError(errno)));
    }
    return std::unique_ptr<FirstCopy>(
        new FirstCopy(std::move(place), std::move(socket), loop, std::move(show)));
}

FirstCopy::FirstCopy(fs::path place, FileDescriptor socket, MainLoop& loop,
                     std::function<void()> show)
    : place_(std::move(place)),
      socket_(std::move(socket)),
      end_(::eventfd(0, EFD_CLOEXEC)),
      loop_(loop),
      show_(std::make_shared<std::function<void()>>(std::move(show))),
      thread_([this] { serve(); }) {}

FirstCopy::~FirstCopy() { leave(); }

void FirstCopy::leave() {
    const MutexLock lock(leaving_);
    if (!thread_.joinable()) return;
    // First, so that nobody comes to a copy that is on its way out.
    std::error_code ignored;
    fs::remove(place_, ignored);
    ::eventfd_write(end_.get(), 1);
    thread_.join();
}

void FirstCopy::serve() {
    pollfd waits[] = {{socket_.get(), POLLIN, 0}, {end_.get(), POLLIN, 0}};
    while (true) {
        if (::poll(waits, std::size(waits), -1) < 0 && errno != EINTR) return;
        if (waits[1].revents != 0) return;
        const FileDescriptor connection(::accept4(socket_.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!connection || !isOwn(connection)) continue;
        loop_.post([weak = std::weak_ptr(show_)] {
            if (const auto show = weak.lock()) (*show)();
        });
        (void)::send(connection.get(), &kShown, 1, MSG_NOSIGNAL);
    }
}

}  // namespace tandrel
