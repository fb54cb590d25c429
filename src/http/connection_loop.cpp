#include "http/connection_loop.h"

#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <utility>

#include <netinet/in.h>
#include <sys/socket.h>

#include "base/file.h"
#include "base/log.h"
#include "http/caller_check.h"

namespace tandrel {
namespace {

constexpr std::uint64_t kListener = EventPoll::kFirstFreeKey;
// How often stalled connections and a paused listener are looked after, while there are any.
constexpr Duration kTick = std::chrono::milliseconds(250);
// Threads that stay when there is nothing to do: one that waits, one for when that one handles.
constexpr std::size_t kFreeThreads = 2;

}  // namespace

Result<std::unique_ptr<ConnectionLoop>> ConnectionLoop::make(Socket listener, HTTPHandler handler,
                                                             const ServerOptions& options) {
    auto poll = TRY(EventPoll::open());
    return std::unique_ptr<ConnectionLoop>(
        new ConnectionLoop(std::move(listener), std::move(poll), std::move(handler), options));
}

ConnectionLoop::ConnectionLoop(Socket listener, std::unique_ptr<EventPoll> poll,
                               HTTPHandler handler, const ServerOptions& options)
    : listener_(std::move(listener)),
      port_(boundPort(listener_)),
      handler_(std::move(handler)),
      options_(options),
      poll_(std::move(poll)),
      table_(*poll_, kListener + 1),
      threads_("pocketlink.http", {options.limits.handlers, kFreeThreads}) {}

Result<void> ConnectionLoop::start() {
    if (!listen()) return systemFailure();
    if (!threads_.start([this] { run(); })) return fail("no thread for the server");
    return {};
}

ConnectionLoop::Stop ConnectionLoop::stop() {
    if (threads_.isCurrent()) {
        std::fputs("an HTTP handler stops its own server\n", stderr);
        std::abort();
    }
    std::lock_guard oneAtATime(stopMutex_);
    if (stopping_.exchange(true)) return Stop::again;
    // Frees the port now; the descriptor goes with this object, since a thread may be using it.
    ::shutdown(listener_.fd(), SHUT_RDWR);
    for (const Pointer& connection : table_.all()) connection->gone.request_stop();
    poll_->wakeAll();
    threads_.join();
    table_.clear();
    return Stop::first;
}

void ConnectionLoop::run() {
    while (!stopping_) {
        if (const auto key = poll_->wait(options_.limits.idleThread)) {
            onEvent(*key);
        } else if (threads_.retire()) {
            return;
        }
    }
}

void ConnectionLoop::onEvent(std::uint64_t key) {
    if (key == EventPoll::kWake) return;
    if (key == EventPoll::kTick) return onTick();
    if (key == kListener) return accept();
    const auto taken = table_.take(key);
    if (!taken) return;
    if (taken->wasHeld) {
        taken->connection->gone.request_stop();
    } else {
        drive(taken->connection);
    }
}

void ConnectionLoop::onTick() {
    tickDue_ = false;
    const ServerLimits& limits = options_.limits;
    if (acceptsLater_.exchange(false)) listen();
    if (table_.endStalled(systemClock().now(), {limits.stalledReply, limits.lingering})) tickSoon();
}

void ConnectionLoop::tickSoon() {
    if (!tickDue_.exchange(true)) poll_->tickAfter(kTick);
}

bool ConnectionLoop::listen() {
    const auto known = listenerKnown_.exchange(true) ? EventPoll::Known::yes : EventPoll::Known::no;
    return poll_->arm(listener_.fd(), kListener, Watch::read, known);
}

void ConnectionLoop::accept() {
    if (!makeRoom()) return acceptLater("too many connections");
    auto accepted = acceptFrom(listener_);
    if (!accepted) {
        const int why = errno;
        if (stopping_) return;
        const bool clientLeft = why == EAGAIN || why == ECONNABORTED || why == EINTR;
        // What else keeps it from being accepted, such as a lack of descriptors, would do so again
        // at once.
        if (!clientLeft) return acceptLater(systemError(why).c_str());
        listen();
        return;
    }
    listen();  // other threads accept while this one goes on
    welcome(*std::move(accepted));
}

bool ConnectionLoop::makeRoom() {
    if (table_.size() < options_.limits.connections) return true;
    return table_.evictQuietest(systemClock().now() - options_.limits.quietBeforeGivingWay);
}

// The connections wait in the system's backlog until one of ours ends or the next tick.
void ConnectionLoop::acceptLater(const char* why) {
    if (!saidFull_.exchange(true)) log(std::string("http waiting: ") + why);
    acceptsLater_ = true;
    tickSoon();
}

void ConnectionLoop::welcome(Accepted accepted) {
    const LoopbackConnection ends{accepted.peerAddress, accepted.peerPort, INADDR_LOOPBACK, port_};
    const Pointer connection = table_.insert(std::move(accepted.socket));
    if (options_.peers != nullptr) {
        // Asked before the first byte is read: no other user's bytes are kept.
        if (const auto why = refusalOfPeer(*options_.peers, ends)) {
            return refuse(connection, *why);
        }
    }
    drive(connection);
}

void ConnectionLoop::drive(const Pointer& connection) {
    if (stopping_) return end(connection);
    switch (connection->phase) {
        case Connection::Phase::reading:
            return read(connection);
        case Connection::Phase::handling:
            return;  // held until its reply, so no event gives it to a thread
        case Connection::Phase::replying:
            return reply(connection);
        case Connection::Phase::lingering:
            return linger(connection);
    }
}

void ConnectionLoop::read(const Pointer& connection) {
    switch (connection->receive()) {
        case Connection::Read::over:
            return end(connection);
        case Connection::Read::complete:
            return admit(connection);
        case Connection::Read::more:
            break;
    }
    if (!table_.account(*connection, options_.limits.bufferedBytes)) return end(connection);
    park(connection, Watch::read);
}

void ConnectionLoop::admit(const Pointer& connection) {
    RequestParser& parser = connection->parser();
    if (parser.hasMoreToCome()) connection->expectMore();
    if (const auto why = refusalOfRequest(parser.method(), parser.head())) {
        return refuse(connection, *why);
    }
    connection->phase = Connection::Phase::handling;
    if (!table_.account(*connection, options_.limits.bufferedBytes)) return end(connection);
    if (!table_.watchForClose(*connection)) return end(connection);
    if (threads_.enter(connection)) handleAndNext(connection);
}

void ConnectionLoop::handleAndNext(Pointer connection) {
    while (connection != nullptr) {
        handle(connection);
        connection = threads_.leave();
    }
}

void ConnectionLoop::handle(const Pointer& connection) {
    // The connection is in the table by now: either `stop` finds it there or this sees the
    // stop.
    if (stopping_) return end(connection);
    const HTTPRequest request = connection->takeRequest();
    table_.account(*connection, options_.limits.bufferedBytes);
    connection->setReply(options_.writer(respond(request)));
    reply(connection);
}

HTTPResponse ConnectionLoop::respond(const HTTPRequest& request) const {
    try {
        return handler_(request);
    } catch (const std::exception& error) {
        log(std::string("http handler failed: ") + error.what());
        return HTTPResponse::error(
            "Something went wrong inside Tandrel. Read the screen "
            "again before you go on.",
            500);
    }
}

void ConnectionLoop::refuse(const Pointer& connection, const std::string& why) {
    connection->expectMore();
    connection->setReply(options_.writer(HTTPResponse::error(why, 403)));
    reply(connection);
}

void ConnectionLoop::reply(const Pointer& connection) {
    switch (connection->sendReply()) {
        case Connection::Write::broken:
            return end(connection);
        case Connection::Write::more:
            return park(connection, Watch::write);
        case Connection::Write::done:
            break;
    }
    const Connection::Drain rest = connection->drain();
    const bool mayClose = rest == Connection::Drain::silent && !connection->expectsMore();
    if (rest == Connection::Drain::closed || mayClose) return end(connection);
    connection->endSending();
    park(connection, Watch::read);
}

void ConnectionLoop::linger(const Pointer& connection) {
    if (connection->drain() == Connection::Drain::closed) return end(connection);
    park(connection, Watch::read);
}

void ConnectionLoop::park(const Pointer& connection, Watch watch) {
    const bool timed = connection->phase != Connection::Phase::reading;
    if (stopping_ || !table_.release(*connection, watch)) return end(connection);
    if (timed) tickSoon();
}

void ConnectionLoop::end(const Pointer& connection) {
    table_.erase(*connection);
    if (acceptsLater_.exchange(false)) listen();
}

}  // namespace tandrel
