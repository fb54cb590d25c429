#include "load.h"

#include <algorithm>
#include <string_view>
#include <thread>

#include <netinet/in.h>
#include <sys/resource.h>
#include <sys/socket.h>

#include "http/socket.h"

namespace tandrel::bench {
namespace {

constexpr std::string_view kRequest =
    "GET /status HTTP/1.1\r\nHost: 127.0.0.1\r\nAccept: */*\r\nConnection: close\r\n\r\n";

// The number of bytes received until the server closed.
std::size_t ask(std::uint16_t port) {
    const Socket socket(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    if (::connect(socket.fd(), generic, sizeof address) != 0) return 0;
    ::send(socket.fd(), kRequest.data(), kRequest.size(), MSG_NOSIGNAL);
    thread_local char chunk[65536];
    std::size_t received = 0;
    while (true) {
        const ssize_t count = ::recv(socket.fd(), chunk, sizeof chunk, 0);
        if (count <= 0) return received;
        received += static_cast<std::size_t>(count);
    }
}

double processorSeconds() {
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    return static_cast<double>(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
           static_cast<double>(used.ru_utime.tv_usec + used.ru_stime.tv_usec) / 1e6;
}
void askUntil(TimePoint end, std::uint16_t port, std::size_t replyBytes, Load& load) {
    TimePoint start = systemClock().now();
    while (start < end) {
        const bool whole = ask(port) >= replyBytes;
        const TimePoint done = systemClock().now();
        if (whole)
            load.microseconds.push_back(toSeconds(done - start) * 1e6);
        else
            ++load.failures;
        start = done;
    }
}

}  // namespace

Load loadFor(std::uint16_t port, int clients, Duration duration, std::size_t replyBytes) {
    std::vector<Load> parts(static_cast<std::size_t>(clients));
    const double processorBefore = processorSeconds();
    const TimePoint start = systemClock().now();
    {
        std::vector<std::jthread> threads;
        for (Load& part : parts) {
            threads.emplace_back([&] { askUntil(start + duration, port, replyBytes, part); });
        }
    }
    Load all;
    all.seconds = toSeconds(systemClock().now() - start);
    all.processorSeconds = processorSeconds() - processorBefore;
    for (const Load& part : parts) {
        all.failures += part.failures;
        all.microseconds.insert(all.microseconds.end(), part.microseconds.begin(),
                                part.microseconds.end());
    }
    return all;
}

double percentile(std::vector<double>& values, double part) {
    if (values.empty()) return 0;
    std::ranges::sort(values);
    const auto last = static_cast<double>(values.size() - 1);
    return values[static_cast<std::size_t>(part * last)];
}

}  // namespace tandrel::bench
