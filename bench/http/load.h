#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "base/clock.h"

namespace tandrel::bench {

// What clients that ask one after another, each on a connection of its own, got from a server.
struct Load {
    std::vector<double> microseconds;  // one for each reply
    double seconds = 0;                // the time of all together
    double processorSeconds = 0;       // spent by this process, clients and server
    std::size_t failures = 0;          // connections without a whole reply
};

// `clients` threads send GET "/status" to the port for `duration` and read each reply to its end.
Load loadFor(std::uint16_t port, int clients, Duration duration, std::size_t replyBytes);

// The value below which that part of all values lies. Sorts the values.
double percentile(std::vector<double>& values, double part);

}  // namespace tandrel::bench
