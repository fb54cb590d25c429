#include "http/connection_table.h"

#include <utility>

namespace tandrel {

std::size_t ConnectionTable::size() const {
    MutexLock lock(mutex_);
    return connections_.size();
}

ConnectionTable::Pointer ConnectionTable::insert(Socket socket) {
    auto connection = std::make_shared<Connection>(nextKey_++, std::move(socket));
    MutexLock lock(mutex_);
    connections_.emplace(connection->key, connection);
    return connection;
}

void ConnectionTable::erase(const Connection& connection) {
    MutexLock lock(mutex_);
    forget(connection.key);
}

void ConnectionTable::clear() {
    std::unordered_map<std::uint64_t, Pointer> ended;
    MutexLock lock(mutex_);
    ended.swap(connections_);
    accountedBytes_ = 0;
}

void ConnectionTable::forget(std::uint64_t key) {
    const auto found = connections_.find(key);
    if (found == connections_.end()) return;
    accountedBytes_ -= found->second->accountedBytes;
    connections_.erase(found);
}

std::optional<ConnectionTable::Taken> ConnectionTable::take(std::uint64_t key) {
    MutexLock lock(mutex_);
    const auto found = connections_.find(key);
    if (found == connections_.end()) return std::nullopt;
    return Taken{found->second, std::exchange(found->second->held, true)};
}

// Armed under the lock: between letting go and arming, another thread could end the connection, and
// its descriptor could already stand for a new one.
bool ConnectionTable::release(Connection& connection, Watch watch) {
    MutexLock lock(mutex_);
    if (!arm(connection, watch)) return false;
    connection.held = false;
    return true;
}

bool ConnectionTable::watchForClose(Connection& connection) {
    return arm(connection, Watch::peerClose);
}

bool ConnectionTable::arm(Connection& connection, Watch watch) {
    const auto known = connection.known ? EventPoll::Known::yes : EventPoll::Known::no;
    connection.known = true;
    return poll_.arm(connection.fd(), connection.key, watch, known);
}

bool ConnectionTable::account(Connection& connection, std::size_t most) {
    const std::size_t held = connection.parser().heldBytes();
    const std::size_t before = std::exchange(connection.accountedBytes, held);
    // Unsigned arithmetic: the difference may be negative, the sum is not.
    return accountedBytes_.fetch_add(held - before) + (held - before) <= most;
}

bool ConnectionTable::evictQuietest(TimePoint quietSince) {
    MutexLock lock(mutex_);
    const Connection* quietest = nullptr;
    for (const auto& [key, connection] : connections_) {
        if (connection->held || connection->phase != Connection::Phase::reading) continue;
        if (connection->lastProgress > quietSince) continue;
        if (quietest == nullptr || connection->lastProgress < quietest->lastProgress) {
            quietest = connection.get();
        }
    }
    if (quietest == nullptr) return false;
    forget(quietest->key);
    return true;
}

bool ConnectionTable::endStalled(TimePoint now, Patience patience) {
    MutexLock lock(mutex_);
    bool others = false;
    std::vector<std::uint64_t> stalled;
    for (const auto& [key, connection] : connections_) {
        if (connection->held || connection->phase == Connection::Phase::reading) continue;
        const bool lingering = connection->phase == Connection::Phase::lingering;
        const Duration allowed = lingering ? patience.lingering : patience.replying;
        if (now - connection->lastProgress < allowed) {
            others = true;
            continue;
        }
        if (!lingering) connection->dropUnsent();
        stalled.push_back(key);
    }
    for (const std::uint64_t key : stalled) forget(key);
    return others;
}

std::vector<ConnectionTable::Pointer> ConnectionTable::all() const {
    MutexLock lock(mutex_);
    std::vector<Pointer> pointers;
    pointers.reserve(connections_.size());
    for (const auto& [key, connection] : connections_) pointers.push_back(connection);
    return pointers;
}

}  // namespace tandrel
