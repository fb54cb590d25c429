#include "http/socket.h"

#include <cerrno>

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include "base/file.h"

namespace tandrel {
namespace {

// The kernel cuts this to net.core.somaxconn.
constexpr int kBacklog = 4096;

sockaddr* generic(sockaddr_in& address) { return reinterpret_cast<sockaddr*>(&address); }

}  // namespace

void Socket::reset() {
    if (fd_ >= 0) ::close(fd_);
    fd_ = -1;
}

std::unexpected<Error> systemFailure() { return fail(systemError(errno)); }

Result<Socket> listenOnLoopback(std::uint16_t port) {
    Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket) return systemFailure();
    const int yes = 1;
    ::setsockopt(socket.fd(), SOL_SOCKET, SO_REUSEADDR, &yes, sizeof yes);
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    if (::bind(socket.fd(), generic(address), sizeof address) != 0) return systemFailure();
    if (::listen(socket.fd(), kBacklog) != 0) return systemFailure();
    return socket;
}

std::uint16_t boundPort(const Socket& socket) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    if (::getsockname(socket.fd(), generic(address), &length) != 0) return 0;
    return ntohs(address.sin_port);
}

std::optional<Accepted> acceptFrom(const Socket& listener) {
    sockaddr_in address{};
    socklen_t length = sizeof address;
    Socket socket(
        ::accept4(listener.fd(), generic(address), &length, SOCK_NONBLOCK | SOCK_CLOEXEC));
    if (!socket) return std::nullopt;
    return Accepted{std::move(socket), ntohl(address.sin_addr.s_addr), ntohs(address.sin_port)};
}

}  // namespace tandrel
