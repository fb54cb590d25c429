#pragma once

#include <atomic>
#include <memory>
#include <mutex>

#include "http/connection_table.h"
#include "http/handler_threads.h"
#include "http/server.h"

namespace tandrel {

// The life of every connection of one server: accept, read, check the caller, handle, reply, close.
//
// All threads wait for events on one poll. The thread that gets an event carries the connection as
// far as it goes without waiting, the handler included, so that a request that is there at once
// costs one wake-up; when the connection has to wait, it goes back to the poll and the thread is
// free.
class ConnectionLoop {
 public:
    static Result<std::unique_ptr<ConnectionLoop>> make(Socket listener, HTTPHandler handler,
                                                        const ServerOptions& options);
    ~ConnectionLoop() { stop(); }
    ConnectionLoop(const ConnectionLoop&) = delete;
    ConnectionLoop& operator=(const ConnectionLoop&) = delete;

    Result<void> start();
    enum class Stop { first, again };
    Stop stop();
    std::uint16_t port() const { return port_; }

 private:
    using Pointer = ConnectionTable::Pointer;

    ConnectionLoop(Socket listener, std::unique_ptr<EventPoll> poll, HTTPHandler handler,
                   const ServerOptions& options);
    void run();
    void onEvent(std::uint64_t key);
    void onTick();

    bool listen();
    void accept();
    bool makeRoom();
    void acceptLater(const char* why);
    void welcome(Accepted accepted);

    // Each takes a connection that the calling thread holds, and lets go of it.
    void drive(const Pointer& connection);
    void read(const Pointer& connection);
    void admit(const Pointer& connection);
    void handleAndNext(Pointer connection);
    void handle(const Pointer& connection);
    void refuse(const Pointer& connection, const std::string& why);
    void reply(const Pointer& connection);
    void linger(const Pointer& connection);
    void park(const Pointer& connection, Watch watch);
    void end(const Pointer& connection);

    HTTPResponse respond(const HTTPRequest& request) const;
    void tickSoon();

    const Socket listener_;
    const std::uint16_t port_;
    const HTTPHandler handler_;
    const ServerOptions options_;
    const std::unique_ptr<EventPoll> poll_;
    ConnectionTable table_;
    std::atomic<bool> stopping_ = false;
    std::atomic<bool> listenerKnown_ = false;
    std::atomic<bool> acceptsLater_ = false;
    std::atomic<bool> saidFull_ = false;  // once, so that a full server does not fill the log
    std::atomic<bool> tickDue_ = false;
    std::mutex stopMutex_;
    HandlerThreads threads_;
};

}  // namespace tandrel
