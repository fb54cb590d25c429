#include "http/client.h"

#include <algorithm>
#include <array>
#include <cerrno>
#include <functional>

#include <fmt/format.h>
#include <netinet/in.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <sys/socket.h>
#include <unistd.h>

#include "base/file.h"
#include "http/reply_parser.h"
#include "http/socket.h"

namespace tandrel {
namespace {

// Keeps the deadline within the clock's range.
constexpr Duration kLongestTimeout = std::chrono::hours(24);

// Becomes readable when a stop is requested, so that a poll can wait for it.
class StopSignal {
 public:
    StopSignal() : event_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {}
    int fd() const { return event_.fd(); }
    void raise() const {
        const std::uint64_t one = 1;
        [[maybe_unused]] const auto written = ::write(event_.fd(), &one, sizeof one);
    }

 private:
    const Socket event_;
};

class Exchange {
 public:
    Exchange(const LoopbackUrl& server, const ClientOptions& options)
        : server_(server),
          options_(options),
          deadline_(systemClock().now() + std::min(options.timeout, kLongestTimeout)),
          onStop_(options.stop, [this] { stopSignal_.raise(); }) {}

    Result<ClientResponse> run(std::string_view request) {
        TRY_VOID(connect());
        TRY_VOID(send(request));
        return receive();
    }

 private:
    Result<void> connect();
    Result<void> send(std::string_view request);
    Result<ClientResponse> receive();
    // Waits until the socket is ready for `events` (of poll).
    Result<void> await(short events);
    std::unexpected<Error> notReachable(int code) const;
    std::unexpected<Error> badReply(ReplyParser::State state) const;

    const LoopbackUrl& server_;
    const ClientOptions& options_;
    const TimePoint deadline_;
    Socket socket_;
    StopSignal stopSignal_;
    std::stop_callback<std::function<void()>> onStop_;
};

Result<void> Exchange::await(short events) {
    while (true) {
        if (options_.stop.stop_requested()) {
            return fail("the request was cancelled", kCancelled);
        }
        const Duration left = deadline_ - systemClock().now();
        if (left <= Duration::zero()) {
            return fail(fmt::format("{} did not answer within {:g} s", server_.text(),
                                    toSeconds(options_.timeout)),
                        kTimedOut);
        }
        std::array<pollfd, 2> waits = {pollfd{socket_.fd(), events, 0},
                                       pollfd{stopSignal_.fd(), POLLIN, 0}};
        const auto milliseconds = std::chrono::ceil<std::chrono::milliseconds>(left).count();
        constexpr std::int64_t kLongestPoll = 60'000;
        const auto bounded = static_cast<int>(std::min<std::int64_t>(milliseconds, kLongestPoll));
        if (::poll(waits.data(), waits.size(), bounded) > 0 && waits[0].revents != 0) return {};
    }
}

Result<void> Exchange::connect() {
    const bool ipv6 = server_.family == LoopbackUrl::Family::ipv6;
    socket_ =
        Socket(::socket(ipv6 ? AF_INET6 : AF_INET, SOCK_STREAM | SOCK_NONBLOCK | SOCK_CLOEXEC, 0));
    if (!socket_) return notReachable(errno);
    sockaddr_in v4{};
    v4.sin_family = AF_INET;
    v4.sin_port = htons(server_.port);
    v4.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    sockaddr_in6 v6{};
    v6.sin6_family = AF_INET6;
    v6.sin6_port = htons(server_.port);
    v6.sin6_addr = in6addr_loopback;
    const auto* address =
        ipv6 ? reinterpret_cast<const sockaddr*>(&v6) : reinterpret_cast<const sockaddr*>(&v4);
    if (::connect(socket_.fd(), address, ipv6 ? sizeof v6 : sizeof v4) == 0) return {};
    if (errno != EINPROGRESS) return notReachable(errno);
    TRY_VOID(await(POLLOUT));
    int error = 0;
    socklen_t length = sizeof error;
    ::getsockopt(socket_.fd(), SOL_SOCKET, SO_ERROR, &error, &length);
    if (error != 0) return notReachable(error);
    return {};
}

Result<void> Exchange::send(std::string_view request) {
    while (!request.empty()) {
        const ssize_t sent = ::send(socket_.fd(), request.data(), request.size(), MSG_NOSIGNAL);
        if (sent >= 0) {
            request.remove_prefix(static_cast<std::size_t>(sent));
        } else if (errno == EAGAIN || errno == EWOULDBLOCK) {
            TRY_VOID(await(POLLOUT));
        } else if (errno == EPIPE || errno == ECONNRESET) {
            return {};  // a server may answer and close before it has read everything
        } else if (errno != EINTR) {
            return notReachable(errno);
        }
    }
    return {};
}

Result<ClientResponse> Exchange::receive() {
    ReplyParser parser(options_.mostBytes);
    std::string chunk(65536, '\0');
    while (true) {
        const ssize_t count = ::recv(socket_.fd(), chunk.data(), chunk.size(), 0);
        if (count < 0 && errno == EINTR) continue;
        if (count < 0 && (errno == EAGAIN || errno == EWOULDBLOCK)) {
            TRY_VOID(await(POLLIN));
            continue;
        }
        if (count < 0) return notReachable(errno);
        const auto state = count == 0
                               ? parser.finish()
                               : parser.append({chunk.data(), static_cast<std::size_t>(count)});
        if (state == ReplyParser::State::complete) return parser.take();
        if (state != ReplyParser::State::incomplete) return badReply(state);
    }
}

std::unexpected<Error> Exchange::notReachable(int code) const {
    return fail(fmt::format("can't reach {}: {}", server_.text(), systemError(code)),
                kNotReachable);
}

std::unexpected<Error> Exchange::badReply(ReplyParser::State state) const {
    if (state == ReplyParser::State::tooLarge) {
        return fail(fmt::format("the reply of {} is larger than {} bytes", server_.text(),
                                options_.mostBytes),
                    kBadReply);
    }
    return fail(fmt::format("{} sent no whole HTTP reply", server_.text()), kBadReply);
}

// A space or a line break in a target would change the request around it.
Result<void> checkTarget(std::string_view target) {
    const bool clean = target.starts_with('/') &&
                       std::ranges::all_of(target, [](char c) { return c > ' ' && c < '\x7f'; });
    if (!clean) return fail("a request's path must begin with a slash and be percent-encoded");
    return {};
}

// HTTP/1.0, so that a server must not send a chunked body (RFC 9112, 6.1).
std::string head(const LoopbackUrl& server, std::string_view method, std::string_view target) {
    return fmt::format("{} {}{} HTTP/1.0\r\nHost: {}:{}\r\nAccept: */*\r\n", method, server.prefix,
                       target, server.host, server.port);
}

}  // namespace

Json ClientResponse::json() const {
    auto value = parseJson({reinterpret_cast<const char*>(body.data()), body.size()});
    if (!value || !value->is_object()) return Json::object();
    return *std::move(value);
}

Result<ClientResponse> httpGet(const LoopbackUrl& server, std::string_view target,
                               const ClientOptions& options) {
    TRY_VOID(checkTarget(target));
    return Exchange(server, options).run(head(server, "GET", target) + "\r\n");
}

Result<ClientResponse> httpPost(const LoopbackUrl& server, std::string_view target,
                                const Json& body, const ClientOptions& options) {
    TRY_VOID(checkTarget(target));
    const std::string text = dumpJson(body);
    return Exchange(server, options)
        .run(head(server, "POST", target) +
             fmt::format("Content-Type: application/json\r\nContent-Length: {}\r\n\r\n{}",
                         text.size(), text));
}

}  // namespace tandrel
