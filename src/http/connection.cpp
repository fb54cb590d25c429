#include "http/connection.h"

#include <array>
#include <cerrno>
#include <utility>

#include <sys/socket.h>

namespace tandrel {
namespace {

// One receive; a buffer of each thread, so that an idle connection costs no memory for it.
constexpr std::size_t kChunkBytes = 65536;
// What is thrown away at most before the connection is closed all the same.
constexpr std::size_t kMostDrainedBytes = 2 * RequestParser::kMostBytes;

std::array<char, kChunkBytes>& scratch() {
    thread_local std::array<char, kChunkBytes> bytes;
    return bytes;
}

ssize_t receiveOnce(int fd, std::array<char, kChunkBytes>& bytes) {
    while (true) {
        const ssize_t count = ::recv(fd, bytes.data(), bytes.size(), MSG_DONTWAIT);
        if (count >= 0 || errno != EINTR) return count;
    }
}

bool isOnlyEmpty() { return errno == EAGAIN || errno == EWOULDBLOCK; }

}  // namespace

Connection::Connection(std::uint64_t connectionKey, Socket socket)
    : key(connectionKey), lastProgress(systemClock().now()), socket_(std::move(socket)) {}

Connection::Read Connection::receive() {
    auto& bytes = scratch();
    while (true) {
        const ssize_t count = receiveOnce(fd(), bytes);
        if (count < 0 && isOnlyEmpty()) return Read::more;
        if (count <= 0) return Read::over;
        lastProgress = systemClock().now();
        const auto length = static_cast<std::size_t>(count);
        switch (parser_.append({bytes.data(), length})) {
            case RequestParser::State::complete:
                return Read::complete;
            case RequestParser::State::tooLarge:
                return Read::over;
            case RequestParser::State::incomplete:
                break;
        }
        // A short read emptied the socket; the poll reports what comes later.
        if (length < bytes.size()) return Read::more;
    }
}

HTTPRequest Connection::takeRequest() {
    HTTPRequest request = parser_.request();
    request.clientGone = gone.get_token();
    parser_ = RequestParser();
    return request;
}

void Connection::setReply(Reply reply) {
    reply_ = std::move(reply);
    phase = Phase::replying;
    lastProgress = systemClock().now();
}

Connection::Write Connection::sendReply() {
    const std::size_t headBytes = reply_.head.size();
    const std::size_t allBytes = headBytes + reply_.body.size();
    while (sent_ < allBytes) {
        iovec parts[2];
        std::size_t count = 0;
        if (sent_ < headBytes) parts[count++] = {reply_.head.data() + sent_, headBytes - sent_};
        const std::size_t ofBody = sent_ > headBytes ? sent_ - headBytes : 0;
        if (ofBody < reply_.body.size()) {
            parts[count++] = {reply_.body.data() + ofBody, reply_.body.size() - ofBody};
        }
        msghdr message{};
        message.msg_iov = parts;
        message.msg_iovlen = count;
        const ssize_t sent = ::sendmsg(fd(), &message, MSG_DONTWAIT | MSG_NOSIGNAL);
        if (sent < 0 && errno == EINTR) continue;
        if (sent < 0) return isOnlyEmpty() ? Write::more : Write::broken;
        sent_ += static_cast<std::size_t>(sent);
        lastProgress = systemClock().now();
    }
    return Write::done;
}

void Connection::endSending() {
    ::shutdown(fd(), SHUT_WR);
    reply_ = Reply();
    phase = Phase::lingering;
}

void Connection::dropUnsent() {
    const linger atOnce{1, 0};
    ::setsockopt(fd(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
}

Connection::Drain Connection::drain() {
    auto& bytes = scratch();
    Drain result = Drain::silent;
    while (drained_ <= kMostDrainedBytes) {
        const ssize_t count = receiveOnce(fd(), bytes);
        if (count < 0 && isOnlyEmpty()) return result;
        if (count <= 0) return Drain::closed;
        drained_ += static_cast<std::size_t>(count);
        result = Drain::flowing;
    }
    return Drain::closed;
}

}  // namespace tandrel
