#include "helper/line_writer.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <fcntl.h>
#include <limits.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include "helper/message_text.h"

namespace tandrel {
namespace {

constexpr int kPatienceMilliseconds = 1000;
constexpr short kHungUp = POLLHUP | POLLRDHUP | POLLERR | POLLNVAL;

// Pipes and sockets can be told not to block; a terminal is shared with the shell, and a pipe that
// is ready takes PIPE_BUF bytes anyway.
bool makeNonBlocking(int output, int flags) {
    struct stat kind{};
    if (flags < 0 || ::fstat(output, &kind) != 0) return false;
    if (!S_ISFIFO(kind.st_mode) && !S_ISSOCK(kind.st_mode)) return false;
    return ::fcntl(output, F_SETFL, flags | O_NONBLOCK) == 0;
}

}  // namespace

LineWriter::LineWriter(int output, int input)
    : output_(output),
      input_(input),
      flags_(::fcntl(output, F_GETFL)),
      largestPiece_(makeNonBlocking(output, flags_) ? SSIZE_MAX : PIPE_BUF) {}

LineWriter::~LineWriter() {
    if (flags_ >= 0) ::fcntl(output_, F_SETFL, flags_);
}

// Every wait is in here, which hears of the app closing its side too.
bool LineWriter::awaitRoom() {
    bool isClosing = false;
    while (true) {
        std::array<pollfd, 2> ends = {pollfd{output_, POLLOUT, 0},
                                      pollfd{isClosing ? -1 : input_, POLLRDHUP, 0}};
        const int count = ::poll(ends.data(), ends.size(), isClosing ? kPatienceMilliseconds : -1);
        if (count < 0 && errno == EINTR) continue;
        if (count <= 0 || (ends[0].revents & (POLLERR | POLLNVAL)) != 0) return false;
        if ((ends[0].revents & POLLOUT) != 0) return true;
        if ((ends[0].revents & POLLHUP) != 0) return false;
        isClosing = isClosing || (ends[1].revents & kHungUp) != 0;
    }
}

void LineWriter::write(const Json& value) {
    const std::string line = messageText(value) + '\n';
    std::string_view rest = line;
    MutexLock lock(mutex_);
    while (!gone_ && !rest.empty()) {
        if (!awaitRoom()) {
            gone_ = true;
            return;
        }
        const ssize_t count = ::write(output_, rest.data(), std::min(rest.size(), largestPiece_));
        if (count > 0) {
            rest.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR && errno != EAGAIN) {
            gone_ = true;
        }
    }
}

}  // namespace tandrel
