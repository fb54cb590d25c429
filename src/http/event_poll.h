#pragma once

#include <cstdint>
#include <memory>
#include <optional>

#include "base/clock.h"
#include "http/socket.h"

namespace tandrel {

enum class Watch {
    read,       // bytes or the peer's end of sending
    write,      // room to send
    peerClose,  // the peer's end of sending or a broken connection, and nothing else
};

// What many threads wait on together. Each armed watch is reported to one thread, once; each wait
// reports one event, so that a thread which then blocks holds no other event back. Any thread.
class EventPoll {
 public:
    static constexpr std::uint64_t kWake = 0;
    static constexpr std::uint64_t kTick = 1;
    static constexpr std::uint64_t kFirstFreeKey = 2;

    static Result<std::unique_ptr<EventPoll>> open();

    enum class Known { no, yes };
    // Reports `key` once when what is watched for happens. `known`: whether `fd` was armed before.
    // False when the system has no room for the watch.
    bool arm(int fd, std::uint64_t key, Watch watch, Known known);

    // The key of the next event; none after `timeout`.
    std::optional<std::uint64_t> wait(Duration timeout);

    // Reports kTick once, after `delay`; replaces a tick that is due.
    void tickAfter(Duration delay);
    // Every wait, now and later, reports kWake.
    void wakeAll();

 private:
    EventPoll(Socket poll, Socket wake, Socket timer);

    const Socket poll_;
    const Socket wake_;
    const Socket timer_;
};

}  // namespace tandrel
