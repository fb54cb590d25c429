#pragma once

#include <stdexcept>

#include <arpa/inet.h>
#include <netinet/in.h>
#include <sys/socket.h>

#include "base/file_descriptor.h"
#include "platform/peer_identity.h"

namespace tandrel {

// A server's and a client's end of one TCP connection over 127.0.0.1.
class LoopbackPair {
 public:
    // `mapped`: the client's socket is an IPv6 one that dials ::ffff:127.0.0.1.
    enum class Client { ipv4, mapped };
    explicit LoopbackPair(Client kind = Client::ipv4) {
        listener = FileDescriptor(::socket(AF_INET, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in address{};
        address.sin_family = AF_INET;
        address.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        check(::bind(listener.get(), generic(address), sizeof address));
        check(::listen(listener.get(), 1));
        address = nameOf(listener.get(), ::getsockname);
        const bool v4 = kind == Client::ipv4;
        client = FileDescriptor(::socket(v4 ? AF_INET : AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in6 mapped{};
        mapped.sin6_family = AF_INET6;
        mapped.sin6_port = address.sin_port;
        ::inet_pton(AF_INET6, "::ffff:127.0.0.1", &mapped.sin6_addr);
        check(v4 ? ::connect(client.get(), generic(address), sizeof address)
                 : ::connect(client.get(), generic(mapped), sizeof mapped));
        server = FileDescriptor(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        check(server.get());
    }

    LoopbackConnection asSeenByServer() const {
        const sockaddr_in peer = nameOf(server.get(), ::getpeername);
        const sockaddr_in own = nameOf(server.get(), ::getsockname);
        return {ntohl(peer.sin_addr.s_addr), ntohs(peer.sin_port), ntohl(own.sin_addr.s_addr),
                ntohs(own.sin_port)};
    }

    FileDescriptor listener;
    FileDescriptor server;
    FileDescriptor client;

 private:
    static void check(int result) {
        if (result < 0) throw std::runtime_error("no loopback connection");
    }
    static const sockaddr* generic(const auto& address) {
        return reinterpret_cast<const sockaddr*>(&address);
    }
    static sockaddr_in nameOf(int socket, auto getter) {
        sockaddr_in name{};
        socklen_t size = sizeof name;
        check(getter(socket, reinterpret_cast<sockaddr*>(&name), &size));
        return name;
    }
};

}  // namespace tandrel
