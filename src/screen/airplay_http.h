#pragma once

#include <memory>

#include "http/server.h"

namespace tandrel {

// Listens on that port of 127.0.0.1, 0 for a free one, and answers in the AirPlay port's form: no
// header lines but its own, pictures marked as not to be kept. The error names the port.
Result<std::unique_ptr<HTTPServer>> serveHTTP(std::uint16_t port, HTTPHandler handler,
                                              PeerIdentity* peers = nullptr);

}  // namespace tandrel
