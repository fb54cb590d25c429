#pragma once

#include <condition_variable>
#include <functional>
#include <map>
#include <mutex>
#include <string>
#include <vector>

#include "http/server.h"

namespace tandrel {

// A small engine for the helper to talk to, over a real socket. Until a test says otherwise it
// knows one phone, "PHONE-A", and does what it is asked at once.
class FakeEngine {
 public:
    using Handler = std::function<HTTPResponse(const HTTPRequest& request)>;

    // Listens, and is the one that helpers find through TANDREL_ENGINE_URL from now on.
    FakeEngine();
    ~FakeEngine();

    // What GET or POST of this path is answered by from now on.
    void answer(const std::string& path, Handler handler);
    // By this JSON, and of a look by its usual reply with these other members.
    void answer(const std::string& path, const Json& reply);
    void answerLook(const Json& other) { answer("/look", lookReply(other)); }
    // A look's reply: a picture of `bytes` bytes, 723 x 1568 pixels unless `other` says otherwise.
    static Json lookReply(const Json& other, std::size_t bytes = 3);

    std::string url() const { return "http://127.0.0.1:" + std::to_string(port()); }
    std::uint16_t port() const { return server_.port(); }

    struct Request {
        std::string method;
        std::string path;
        std::map<std::string, std::string> query;
        Json body;
    };
    // The requests of this path so far, oldest first; of every path.
    std::vector<Request> requests(const std::string& path) const;
    std::vector<Request> requests() const;
    // Blocks until there have been `count` requests of this path.
    void await(const std::string& path, std::size_t count = 1);

 private:
    HTTPResponse handle(const HTTPRequest& request);

    mutable std::mutex mutex_;
    std::condition_variable changed_;
    std::map<std::string, Handler> handlers_;
    std::vector<Request> requests_;
    HTTPServer server_;
};

// Blocks until the client has gone.
void awaitClientGone(const HTTPRequest& request);

}  // namespace tandrel
