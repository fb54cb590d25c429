#include "http/server.h"

#include <utility>

#include "base/log.h"
#include "http/connection_loop.h"

namespace tandrel {
namespace {

Result<std::unique_ptr<ConnectionLoop>> openLoop(std::uint16_t port, HTTPHandler handler,
                                                 const ServerOptions& options) {
    Socket listener = TRY(listenOnLoopback(port));
    auto loop = TRY(ConnectionLoop::make(std::move(listener), std::move(handler), options));
    TRY_VOID(loop->start());
    return loop;
}

}  // namespace

HTTPServer::HTTPServer(std::uint16_t port, HTTPHandler handler, ServerOptions options)
    : port_(port), handler_(std::move(handler)), options_(options) {}

HTTPServer::~HTTPServer() { stop(); }

Result<void> HTTPServer::start() {
    if (handler_ == nullptr) return fail("the server was started before");
    auto loop = openLoop(port_, std::exchange(handler_, nullptr), options_);
    if (!loop) {
        log("http failed: " + loop.error().message);
        return std::unexpected(loop.error());
    }
    loop_ = *std::move(loop);
    port_ = loop_->port();
    log("http ready");
    return {};
}

void HTTPServer::stop() {
    if (loop_ != nullptr && loop_->stop() == ConnectionLoop::Stop::first) log("http cancelled");
}

}  // namespace tandrel
