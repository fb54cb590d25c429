#include "platform/linux/sock_diag_peer_identity.h"

#include <array>
#include <cerrno>
#include <charconv>
#include <cstring>
#include <string>
#include <vector>

#include <arpa/inet.h>
#include <fmt/format.h>
#include <linux/inet_diag.h>
#include <linux/netlink.h>
#include <linux/sock_diag.h>
#include <netinet/tcp.h>
#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

#include "base/file.h"
#include "base/file_descriptor.h"

namespace tandrel {
namespace {

// The kernel answers within the call that asks; this bounds a kernel that does not.
constexpr timeval kLongestAnswer{.tv_sec = 0, .tv_usec = 200'000};

struct Request {
    nlmsghdr header;
    inet_diag_req_v2 body;
};

Request requestFor(const LoopbackConnection& connection) {
    Request request{};
    request.header.nlmsg_len = sizeof request;
    request.header.nlmsg_type = SOCK_DIAG_BY_FAMILY;
    request.header.nlmsg_flags = NLM_F_REQUEST;
    request.body.sdiag_family = AF_INET;
    request.body.sdiag_protocol = IPPROTO_TCP;
    request.body.idiag_states = ~0U;
    inet_diag_sockid& id = request.body.id;
    id.idiag_sport = htons(connection.peerPort);
    id.idiag_dport = htons(connection.ownPort);
    id.idiag_src[0] = htonl(connection.peerAddress);
    id.idiag_dst[0] = htonl(connection.ownAddress);
    id.idiag_cookie[0] = INET_DIAG_NOCOOKIE;
    id.idiag_cookie[1] = INET_DIAG_NOCOOKIE;
    return request;
}

PeerAnswer unavailable(int code) { return {PeerLookup::unavailable, 0, systemError(code)}; }

// The kernel falls back to a socket that listens on the peer's port when the connection is gone; a
// socket without inode is one that its process closed, whose owner is no longer known.
bool isTheOpenPeer(const inet_diag_msg& socket, const LoopbackConnection& connection) {
    return ntohs(socket.id.idiag_sport) == connection.peerPort &&
           ntohs(socket.id.idiag_dport) == connection.ownPort && socket.idiag_inode != 0 &&
           socket.idiag_state != TCP_LISTEN;
}

PeerAnswer readAnswer(const char* bytes, std::size_t size, const LoopbackConnection& connection) {
    nlmsghdr header{};
    if (size < sizeof header) return unavailable(EBADMSG);
    std::memcpy(&header, bytes, sizeof header);
    const char* payload = bytes + NLMSG_HDRLEN;
    const std::size_t payloadSize = size - NLMSG_HDRLEN;
    if (header.nlmsg_type == NLMSG_ERROR && payloadSize >= sizeof(nlmsgerr)) {
        nlmsgerr error{};
        std::memcpy(&error, payload, sizeof error);
        if (error.error == -ENOENT) return {PeerLookup::gone, 0, {}};
        return unavailable(-error.error);
    }
    inet_diag_msg socket{};
    if (header.nlmsg_type != SOCK_DIAG_BY_FAMILY || payloadSize < sizeof socket) {
        return unavailable(EBADMSG);
    }
    std::memcpy(&socket, payload, sizeof socket);
    if (!isTheOpenPeer(socket, connection)) return {PeerLookup::gone, 0, {}};
    return {PeerLookup::found, socket.idiag_uid, {}};
}

// Fields of one row, separated by blanks; nothing of the row is copied.
std::vector<std::string_view> fields(std::string_view row) {
    std::vector<std::string_view> result;
    while (true) {
        const auto start = row.find_first_not_of(' ');
        if (start == std::string_view::npos) return result;
        row.remove_prefix(start);
        const auto end = std::min(row.find(' '), row.size());
        result.push_back(row.substr(0, end));
        row.remove_prefix(end);
    }
}

// Addresses as the kernel prints them: the 32-bit words as they stand in memory, the port as a
// number, all in upper-case hexadecimal.
std::string endpoint(std::uint32_t address, std::uint16_t port) {
    return fmt::format("{:08X}:{:04X}", htonl(address), port);
}

// ::ffff:a.b.c.d, of which the table shows four words.
std::string mapped(const std::string& endpoint) {
    return fmt::format("{:016X}{:08X}", 0, htonl(0xFFFF)) + endpoint;
}

}  // namespace

PeerAnswer askSockDiag(const LoopbackConnection& connection) {
    const FileDescriptor netlink(
        ::socket(AF_NETLINK, SOCK_DGRAM | SOCK_CLOEXEC, NETLINK_SOCK_DIAG));
    if (!netlink) return unavailable(errno);
    ::setsockopt(netlink.get(), SOL_SOCKET, SO_RCVTIMEO, &kLongestAnswer, sizeof kLongestAnswer);
    const Request request = requestFor(connection);
    sockaddr_nl kernel{};
    kernel.nl_family = AF_NETLINK;
    const auto* address = reinterpret_cast<const sockaddr*>(&kernel);
    if (::sendto(netlink.get(), &request, sizeof request, 0, address, sizeof kernel) < 0) {
        return unavailable(errno);
    }
    std::array<char, 1024> reply;
    sockaddr_nl sender{};
    socklen_t senderSize = sizeof sender;
    const ssize_t count = ::recvfrom(netlink.get(), reply.data(), reply.size(), 0,
                                     reinterpret_cast<sockaddr*>(&sender), &senderSize);
    if (count < 0) return unavailable(errno);
    if (sender.nl_pid != 0) return unavailable(EBADMSG);  // not the kernel
    return readAnswer(reply.data(), static_cast<std::size_t>(count), connection);
}

PeerAnswer findInProcNet(std::string_view table, const LoopbackConnection& connection) {
    enum Field { local = 1, remote = 2, user = 7, inode = 9 };
    const std::string peer = endpoint(connection.peerAddress, connection.peerPort);
    const std::string own = endpoint(connection.ownAddress, connection.ownPort);
    const std::string mappedPeer = mapped(peer);
    const std::string mappedOwn = mapped(own);
    while (!table.empty()) {
        const auto end = std::min(table.find('\n'), table.size());
        const auto row = fields(table.substr(0, end));
        table.remove_prefix(std::min(end + 1, table.size()));
        if (row.size() <= inode) continue;
        const bool matches = (row[local] == peer && row[remote] == own) ||
                             (row[local] == mappedPeer && row[remote] == mappedOwn);
        if (!matches || row[inode] == "0") continue;
        uid_t found = 0;
        const char* last = row[user].data() + row[user].size();
        const auto parsed = std::from_chars(row[user].data(), last, found);
        if (parsed.ec == std::errc() && parsed.ptr == last) return {PeerLookup::found, found, {}};
    }
    return {PeerLookup::gone, 0, {}};
}

PeerAnswer askProcNet(const LoopbackConnection& connection) {
    constexpr std::size_t kLargestTable = 64 * 1024 * 1024;  // some 400,000 sockets
    PeerAnswer answer{PeerLookup::gone, 0, {}};
    // The second table is missing where IPv6 is switched off.
    for (const char* table : {"/proc/self/net/tcp", "/proc/self/net/tcp6"}) {
        const auto text = readFile(table, kLargestTable);
        if (!text) {
            if (answer.error.empty()) answer.error = text.error().message;
            continue;
        }
        const PeerAnswer found = findInProcNet(*text, connection);
        if (found.lookup == PeerLookup::found) return found;
    }
    if (!answer.error.empty()) answer.lookup = PeerLookup::unavailable;
    return answer;
}

Result<uid_t> SockDiagPeerIdentity::userBehind(const LoopbackConnection& connection) {
    PeerAnswer answer = askSockDiag(connection);
    if (answer.lookup == PeerLookup::unavailable) answer = askProcNet(connection);
    switch (answer.lookup) {
        case PeerLookup::found:
            return answer.user;
        case PeerLookup::gone:
            return fail("can't tell who is calling: the connection's other end is gone", 403);
        case PeerLookup::unavailable:
            break;
    }
    return fail("can't tell who is calling: " + answer.error, 403);
}

uid_t SockDiagPeerIdentity::ownUser() const { return ::geteuid(); }

}  // namespace tandrel
