#pragma once

#include <cstdint>
#include <optional>
#include <utility>

#include "base/result.h"

namespace tandrel {

// Owns a file descriptor and closes it at its end.
class Socket {
 public:
    Socket() = default;
    explicit Socket(int fd) : fd_(fd) {}
    ~Socket() { reset(); }
    Socket(const Socket&) = delete;
    Socket& operator=(const Socket&) = delete;
    Socket(Socket&& other) noexcept : fd_(std::exchange(other.fd_, -1)) {}
    Socket& operator=(Socket&& other) noexcept {
        if (this != &other) {
            reset();
            fd_ = std::exchange(other.fd_, -1);
        }
        return *this;
    }

    int fd() const { return fd_; }
    explicit operator bool() const { return fd_ >= 0; }
    void reset();

 private:
    int fd_ = -1;
};

// The system's words for errno as an error.
std::unexpected<Error> systemFailure();

// A non-blocking listener on 127.0.0.1; port 0 takes a free one. The error is the system's text.
Result<Socket> listenOnLoopback(std::uint16_t port);
std::uint16_t boundPort(const Socket& socket);

struct Accepted {
    Socket socket;                  // non-blocking
    std::uint32_t peerAddress = 0;  // IPv4, host byte order
    std::uint16_t peerPort = 0;
};

// The next waiting connection; without one errno says why.
std::optional<Accepted> acceptFrom(const Socket& listener);

}  // namespace tandrel
