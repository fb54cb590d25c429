#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <optional>
#include <unordered_map>
#include <vector>

#include "base/mutex.h"
#include "http/connection.h"
#include "http/event_poll.h"

namespace tandrel {

// The open connections, and which of them a thread drives. An event names a connection by its key,
// never by its descriptor, because another thread may have closed it and its descriptor may already
// be another connection's. Any thread.
class ConnectionTable {
 public:
    using Pointer = std::shared_ptr<Connection>;

    // Keys of connections begin at `firstKey`.
    ConnectionTable(EventPoll& poll, std::uint64_t firstKey) : poll_(poll), nextKey_(firstKey) {}

    std::size_t size() const;
    // The new connection is held by the caller.
    Pointer insert(Socket socket);
    // Ends the connection, which the caller holds.
    void erase(const Connection& connection);
    void clear();

    struct Taken {
        Pointer connection;
        bool wasHeld = false;  // another thread drives it; only `gone` may be touched
    };
    // The connection of an event, held by the caller from now on; none when it has ended.
    std::optional<Taken> take(std::uint64_t key);
    // Lets go of the connection until the poll reports it. False when that cannot be watched.
    bool release(Connection& connection, Watch watch);
    // Reports the peer's close while the caller goes on holding the connection.
    bool watchForClose(Connection& connection);

    // Notes the bytes the connection's request holds in memory; false when all requests together
    // hold more than `most`.
    bool account(Connection& connection, std::size_t most);

    // Ends the connection that has been waiting longest for its client's request, if its last byte
    // came before `quietSince`.
    bool evictQuietest(TimePoint quietSince);
    struct Patience {
        Duration replying;
        Duration lingering;
    };
    // Ends connections whose reply is not taken and whose lingering has lasted long enough; says
    // whether there are others to look at later.
    bool endStalled(TimePoint now, Patience patience);

    std::vector<Pointer> all() const;

 private:
    bool arm(Connection& connection, Watch watch);
    void forget(std::uint64_t key) RUNS_ON(mutex_);

    EventPoll& poll_;
    mutable Mutex mutex_;
    std::unordered_map<std::uint64_t, Pointer> connections_ OWNED_BY(mutex_);
    std::atomic<std::uint64_t> nextKey_;
    std::atomic<std::size_t> accountedBytes_ = 0;
};

}  // namespace tandrel
