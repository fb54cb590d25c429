#include "helper/line_writer.h"

#include <algorithm>
#include <array>
#include <cerrno>

#include <limits.h>
#include <poll.h>
#include <unistd.h>

namespace tandrel {
namespace {

constexpr int kPatienceMilliseconds = 1000;
constexpr short kClosed = POLLHUP | POLLRDHUP | POLLERR | POLLNVAL;

}  // namespace

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
        isClosing = isClosing || (ends[1].revents & kClosed) != 0;
    }
}

void LineWriter::write(const Json& value) {
    std::string line = dumpJson(value);
    line += '\n';
    std::string_view rest = line;
    MutexLock lock(mutex_);
    while (!gone_ && !rest.empty()) {
        // A pipe that is ready takes PIPE_BUF bytes without blocking, so that the wait is always in
        // poll, which also hears of the app closing its side.
        const std::size_t piece = std::min<std::size_t>(rest.size(), PIPE_BUF);
        if (!awaitRoom()) {
            gone_ = true;
            return;
        }
        const ssize_t count = ::write(output_, rest.data(), piece);
        if (count > 0) {
            rest.remove_prefix(static_cast<std::size_t>(count));
        } else if (errno != EINTR && errno != EAGAIN) {
            gone_ = true;
        }
    }
}

}  // namespace tandrel
