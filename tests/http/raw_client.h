#pragma once

#include <chrono>
#include <string>
#include <string_view>

#include <netinet/in.h>
#include <sys/socket.h>

#include "http/socket.h"

namespace tandrel::test {

// A client that sends exactly the bytes it is told, well-formed or not. A wait that never ends in a
// working server ends after kPatience, so that a fault fails a test instead of hanging it.
class RawClient {
 public:
    static constexpr std::chrono::seconds kPatience{20};

    // Makes the socket only.
    RawClient();
    explicit RawClient(std::uint16_t port) : RawClient() { connect(port); }
    RawClient& connect(std::uint16_t port, std::uint32_t to = INADDR_LOOPBACK);
    // Bounds each wait from now on.
    RawClient& waitAtMost(std::chrono::milliseconds patience);

    RawClient& send(std::string_view bytes);
    RawClient& endSending();
    // Closes at once; with Close::reset the peer gets a reset instead of an end.
    enum class Close { gently, reset };
    void close(Close how = Close::gently);

    // Everything until the server closes; "<reset>" or "<nothing>" (time ran out) are appended.
    std::string readAll();
    // Whether the server closes, or resets because of bytes that it did not read, without a word.
    bool closedWithoutReply();
    // Whether it is connected.
    explicit operator bool() const { return static_cast<bool>(socket_); }
    std::uint16_t ownPort() const { return boundPort(socket_); }
    // Waits until the server has closed or reset, without reading.
    void awaitPeerClose();

 private:
    Socket socket_;
};

inline constexpr const char* kOk = "HTTP/1.1 200 OK";

// One whole exchange.
std::string exchange(std::uint16_t port, std::string_view request);
// What follows the blank line.
std::string bodyOf(std::string_view reply);
std::string firstLineOf(std::string_view reply);
// Threads of this process with that name.
int threadsNamed(std::string_view name);

}  // namespace tandrel::test
