#pragma once

#include <map>
#include <stop_token>
#include <string>
#include <string_view>

#include "base/bytes.h"
#include "base/clock.h"
#include "base/json.h"
#include "base/result.h"
#include "http/loopback_url.h"

// A blocking HTTP client for servers on this computer: one request a connection, no redirects, no
// proxy. Any thread.
namespace tandrel {

struct ClientResponse {
    int status = 0;
    std::string contentType;                     // as sent; empty without one
    std::map<std::string, std::string> headers;  // names in lower case; the last of a name counts
    Bytes body;

    // The body as a JSON object; an empty object when it is none.
    Json json() const;
};

struct ClientOptions {
    // For the whole exchange, from connecting to the last byte.
    Duration timeout = std::chrono::seconds(10);
    // Ends the exchange at once by closing the connection, which the server can notice.
    std::stop_token stop = {};
    // Of the reply, head and body together.
    std::size_t mostBytes = 64 << 20;
};

// The `status` of an error tells why there is no reply; any reply, whatever its status, is none.
inline constexpr int kNotReachable = 503;
inline constexpr int kTimedOut = 504;
inline constexpr int kBadReply = 502;
inline constexpr int kCancelled = 499;

// `target` is the path with its query, percent-encoded, beginning with "/".
Result<ClientResponse> httpGet(const LoopbackUrl& server, std::string_view target,
                               const ClientOptions& options = {});
Result<ClientResponse> httpPost(const LoopbackUrl& server, std::string_view target,
                                const Json& body, const ClientOptions& options = {});

}  // namespace tandrel
