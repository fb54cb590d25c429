#pragma once

#include <cstdint>
#include <optional>
#include <stop_token>

#include "base/clock.h"
#include "http/reply_writer.h"
#include "http/request_parser.h"
#include "http/socket.h"

namespace tandrel {

// One accepted connection and its single request. Driven by one thread at a time; ConnectionTable
// says which.
class Connection {
 public:
    Connection(std::uint64_t key, Socket socket);

    enum class Phase {
        reading,
        handling,  // the request waits for its handler or is with it
        replying,
        lingering,  // the reply is out; what still arrives is thrown away until the peer has closed
    };
    enum class Read { more, complete, over };
    enum class Write { more, done, broken };
    enum class Drain { silent, flowing, closed };

    // Takes what has arrived. `over`: the peer stopped, broke, or sent too much.
    Read receive();
    RequestParser& parser() { return parser_; }

    // Turns the request that was read into the record for the handler and frees its bytes.
    HTTPRequest takeRequest();

    void setReply(Reply reply);
    // Sends what the system takes now.
    Write sendReply();

    // Closing a socket with unread bytes resets the connection, which may cost the client its
    // reply; so when more was, or is likely to be, sent than was read, it is read away first.
    void expectMore() { expectsMore_ = true; }
    bool expectsMore() const { return expectsMore_; }
    void endSending();
    // Makes the end a reset, which drops what the client has not taken.
    void dropUnsent();
    Drain drain();

    const std::uint64_t key;
    std::stop_source gone;  // requested when the peer closes while the request is handled

    // Under the lock of ConnectionTable: a thread drives it, or it waits for its handler.
    bool held = true;

    // Of the thread that drives it.
    std::size_t accountedBytes = 0;
    Phase phase = Phase::reading;
    bool known = false;  // to the poll
    TimePoint lastProgress;
    int fd() const { return socket_.fd(); }

 private:
    Socket socket_;
    RequestParser parser_;
    Reply reply_;
    std::size_t sent_ = 0;
    std::size_t drained_ = 0;
    bool expectsMore_ = false;
};

}  // namespace tandrel
