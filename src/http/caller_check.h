#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "platform/peer_identity.h"

// Who may call a loopback port: programs of the same user on this computer, and never a web page,
// neither by a cross-site request nor through a foreign name that resolves to 127.0.0.1 (DNS
// rebinding). Browsers always send Host, Origin or Sec-Fetch-Site with such requests; the check is
// therefore on what they say, and a client that says nothing passes.
namespace tandrel {

// Why the program behind the connection may not call, as a sentence; none when it may. An owner
// that cannot be told may not.
std::optional<std::string> refusalOfPeer(PeerIdentity& peers, const LoopbackConnection& connection);

// The same for a request, from its method and its head (request line and headers).
std::optional<std::string> refusalOfRequest(std::string_view method, std::string_view head);

}  // namespace tandrel
