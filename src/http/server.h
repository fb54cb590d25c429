#pragma once

#include <cstdint>
#include <functional>
#include <memory>

#include "base/clock.h"
#include "base/result.h"
#include "http/message.h"
#include "http/reply_writer.h"
#include "platform/peer_identity.h"

namespace tandrel {

// What one server takes on at most. A request's own size is bounded by RequestParser.
struct ServerLimits {
    // Handlers running at once; a request past that waits for one to return.
    std::size_t handlers = 256;
    // Past that, connections wait in the system's backlog, and the one that has been waiting
    // longest for its client's request gives way if nothing came for `quietBeforeGivingWay`. While
    // there is room a connection may be as slow as it likes.
    std::size_t connections = 2048;
    Duration quietBeforeGivingWay = std::chrono::seconds(60);
    // All requests that are not yet with their handlers, together; the one that goes past is
    // closed.
    std::size_t bufferedBytes = 64 << 20;
    // A client that takes not one byte of its reply for that long has lost it.
    Duration stalledReply = std::chrono::seconds(60);
    // How long bytes after the request are read away once the reply is out.
    Duration lingering = std::chrono::seconds(2);
    // A thread that has had nothing to do for that long ends.
    Duration idleThread = std::chrono::seconds(10);
};

struct ServerOptions {
    ReplyWriter writer = httpReplyWriter;
    // Tells whether a caller is the same user; outlives the server. None: every user may call.
    PeerIdentity* peers = nullptr;
    ServerLimits limits = {};
};

// Runs on a thread of the server, many at a time, and may block; it must return once
// `HTTPRequest::clientGone` is requested, which `stop` does. Stop callbacks on that token run on a
// thread that serves connections and must return at once. An exception becomes a 500.
using HTTPHandler = std::function<HTTPResponse(const HTTPRequest& request)>;

class ConnectionLoop;

// A small HTTP/1.1 server on 127.0.0.1: one request a connection, answered by one handler, no
// keep-alive, no chunked bodies. A web page's request gets 403 (see caller_check.h).
//
// Every thread is named "pocketlink.http". There are as many as handlers that run, and one or two
// more, whatever the number of connections.
class HTTPServer {
 public:
    // Port 0 takes a free one at `start`.
    HTTPServer(std::uint16_t port, HTTPHandler handler, ServerOptions options = {});
    // Stops.
    ~HTTPServer();
    HTTPServer(const HTTPServer&) = delete;
    HTTPServer& operator=(const HTTPServer&) = delete;

    // Listens from now on. The error is the system's text, such as "Address already in use". Once
    // only.
    Result<void> start();

    // Frees the port, closes what is open, requests `clientGone` of running handlers and waits for
    // them to return. May be called again, and before `start`, but not by a handler.
    void stop();

    // The port that is listened on, before `start` the one asked for.
    std::uint16_t port() const { return port_; }

 private:
    std::uint16_t port_;
    HTTPHandler handler_;
    const ServerOptions options_;
    std::unique_ptr<ConnectionLoop> loop_;
};

}  // namespace tandrel
