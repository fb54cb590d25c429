#include "raw_client.h"

#include <cerrno>
#include <filesystem>
#include <fstream>

#include <netinet/in.h>
#include <poll.h>

namespace tandrel::test {

RawClient::RawClient() : socket_(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0)) {
    waitAtMost(kPatience);
}

RawClient& RawClient::waitAtMost(std::chrono::milliseconds patience) {
    const timeval time{patience.count() / 1000, patience.count() % 1000 * 1000};
    ::setsockopt(socket_.fd(), SOL_SOCKET, SO_RCVTIMEO, &time, sizeof time);
    ::setsockopt(socket_.fd(), SOL_SOCKET, SO_SNDTIMEO, &time, sizeof time);
    return *this;
}

RawClient& RawClient::connect(std::uint16_t port, std::uint32_t to) {
    sockaddr_in address{};
    address.sin_family = AF_INET;
    address.sin_port = htons(port);
    address.sin_addr.s_addr = htonl(to);
    const auto* generic = reinterpret_cast<const sockaddr*>(&address);
    if (::connect(socket_.fd(), generic, sizeof address) != 0) socket_.reset();
    return *this;
}

RawClient& RawClient::send(std::string_view bytes) {
    while (!bytes.empty()) {
        const ssize_t sent = ::send(socket_.fd(), bytes.data(), bytes.size(), MSG_NOSIGNAL);
        if (sent <= 0) break;  // the server has closed; what it replied can still be read
        bytes.remove_prefix(static_cast<std::size_t>(sent));
    }
    return *this;
}

RawClient& RawClient::endSending() {
    ::shutdown(socket_.fd(), SHUT_WR);
    return *this;
}

void RawClient::close(Close how) {
    if (how == Close::reset) {
        const linger atOnce{1, 0};
        ::setsockopt(socket_.fd(), SOL_SOCKET, SO_LINGER, &atOnce, sizeof atOnce);
    }
    socket_.reset();
}

std::string RawClient::readAll() {
    std::string all;
    char chunk[65536];
    while (true) {
        const ssize_t count = ::recv(socket_.fd(), chunk, sizeof chunk, 0);
        if (count == 0) return all;
        if (count < 0) return all + (errno == ECONNRESET ? "<reset>" : "<nothing>");
        all.append(chunk, static_cast<std::size_t>(count));
    }
}

bool RawClient::closedWithoutReply() {
    const std::string reply = readAll();
    return reply.empty() || reply == "<reset>";
}

void RawClient::awaitPeerClose() {
    pollfd wait{socket_.fd(), POLLRDHUP, 0};
    ::poll(&wait, 1, static_cast<int>(std::chrono::milliseconds(kPatience).count()));
}

std::string exchange(std::uint16_t port, std::string_view request) {
    RawClient client(port);
    return client.send(request).readAll();
}

std::string bodyOf(std::string_view reply) {
    const std::size_t blank = reply.find("\r\n\r\n");
    return blank == std::string_view::npos ? "" : std::string(reply.substr(blank + 4));
}

std::string firstLineOf(std::string_view reply) {
    return std::string(reply.substr(0, reply.find("\r\n")));
}

int threadsNamed(std::string_view name) {
    int count = 0;
    for (const auto& task : std::filesystem::directory_iterator("/proc/self/task")) {
        std::ifstream file(task.path() / "comm");
        std::string comm;
        if (std::getline(file, comm) && comm == name) ++count;
    }
    return count;
}

}  // namespace tandrel::test
