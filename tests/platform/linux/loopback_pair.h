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
        bindAndListen(listener.get(), address);
        const std::uint16_t port = ntohs(nameOf(listener.get(), ::getsockname).sin_port);
        dial(kind, port);
        server = FileDescriptor(::accept4(listener.get(), nullptr, nullptr, SOCK_CLOEXEC));
        if (!server) throw std::runtime_error("accept");
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
    template <typename Getter>
    static sockaddr_in nameOf(int socket, Getter getter) {
        sockaddr_in name{};
        socklen_t size = sizeof name;
        if (getter(socket, reinterpret_cast<sockaddr*>(&name), &size) != 0) {
            throw std::runtime_error("socket name");
        }
        return name;
    }

    static void bindAndListen(int socket, const sockaddr_in& address) {
        const auto* name = reinterpret_cast<const sockaddr*>(&address);
        if (::bind(socket, name, sizeof address) != 0 || ::listen(socket, 1) != 0) {
            throw std::runtime_error("listen");
        }
    }

    void dial(Client kind, std::uint16_t port) {
        const bool v4 = kind == Client::ipv4;
        client = FileDescriptor(::socket(v4 ? AF_INET : AF_INET6, SOCK_STREAM | SOCK_CLOEXEC, 0));
        sockaddr_in plain{};
        plain.sin_family = AF_INET;
        plain.sin_port = htons(port);
        plain.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
        sockaddr_in6 mapped{};
        mapped.sin6_family = AF_INET6;
        mapped.sin6_port = htons(port);
        ::inet_pton(AF_INET6, "::ffff:127.0.0.1", &mapped.sin6_addr);
        const auto* name = v4 ? reinterpret_cast<const sockaddr*>(&plain)
                              : reinterpret_cast<const sockaddr*>(&mapped);
        const socklen_t size = v4 ? sizeof plain : sizeof mapped;
        if (::connect(client.get(), name, size) != 0) throw std::runtime_error("connect");
    }
};

}  // namespace tandrel
