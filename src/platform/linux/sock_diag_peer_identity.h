#pragma once

#include <string_view>

#include "platform/peer_identity.h"

namespace tandrel {

// Asks the kernel for the peer's end of the connection by its exact four-tuple (sock_diag(7)).
// Where that is not permitted, looks the tuple up in /proc/net/tcp and tcp6, which takes longer the
// more sockets there are. A socket that its process has closed belongs to nobody any more: an
// error.
class SockDiagPeerIdentity final : public PeerIdentity {
 public:
    Result<uid_t> userBehind(const LoopbackConnection& connection) override;
    uid_t ownUser() const override;
};

// The two ways, for tests.
enum class PeerLookup { found, gone, unavailable };
struct PeerAnswer {
    PeerLookup lookup = PeerLookup::unavailable;
    uid_t user = 0;     // when found
    std::string error;  // when unavailable

    bool operator==(const PeerAnswer&) const = default;
};
PeerAnswer askSockDiag(const LoopbackConnection& connection);
PeerAnswer askProcNet(const LoopbackConnection& connection);
// Looks the connection up in a table in the form of /proc/net/tcp or, with IPv4-mapped addresses,
// /proc/net/tcp6.
PeerAnswer findInProcNet(std::string_view table, const LoopbackConnection& connection);

}  // namespace tandrel
