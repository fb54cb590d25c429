#include "screen/airplay_http.h"

#include <utility>

namespace tandrel {

Result<std::unique_ptr<HTTPServer>> serveHTTP(std::uint16_t port, HTTPHandler handler,
                                              PeerIdentity* peers) {
    auto server = std::make_unique<HTTPServer>(
        port, std::move(handler), ServerOptions{.writer = airplayReplyWriter, .peers = peers});
    if (server->start()) return server;
    return fail("cannot listen on 127.0.0.1:" + std::to_string(port));
}

}  // namespace tandrel
