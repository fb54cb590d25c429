#pragma once

#include <cstdint>

#include <sys/types.h>

#include "base/result.h"

// Who is behind a TCP connection over the loopback interface.
namespace tandrel {

struct LoopbackConnection {
    std::uint32_t peerAddress = 0;  // IPv4, host byte order
    std::uint16_t peerPort = 0;
    std::uint32_t ownAddress = 0;
    std::uint16_t ownPort = 0;
};

class PeerIdentity {
 public:
    virtual ~PeerIdentity() = default;
    // The user id that owns the peer's socket. An error means that it could not be told, which is
    // never to be taken for a yes. Any thread.
    virtual Result<uid_t> userBehind(const LoopbackConnection& connection) = 0;
    virtual uid_t ownUser() const = 0;
};

}  // namespace tandrel
