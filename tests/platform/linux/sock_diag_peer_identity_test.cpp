#include "platform/linux/sock_diag_peer_identity.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include "platform/linux/loopback_pair.h"

namespace tandrel {
namespace {

const PeerAnswer kGone{PeerLookup::gone, 0, {}};

// Both ways of asking must give the same answers about real connections.
void expectAnswer(const LoopbackConnection& connection, const PeerAnswer& expected) {
    EXPECT_EQ(askSockDiag(connection), expected);
    EXPECT_EQ(askProcNet(connection), expected);
}

TEST(PeerIdentity, IsTheUserOfAPeerWhileItIsOpen) {
    for (const auto client : {LoopbackPair::Client::ipv4, LoopbackPair::Client::mapped}) {
        LoopbackPair pair(client);
        const LoopbackConnection connection = pair.asSeenByServer();
        expectAnswer(connection, {PeerLookup::found, ::geteuid(), {}});
        ::shutdown(pair.client.get(), SHUT_WR);  // it has only finished sending
        expectAnswer(connection, {PeerLookup::found, ::geteuid(), {}});
        constexpr uid_t kOther = 65534;
        if (::fchown(pair.client.get(), kOther, kOther) == 0) {  // root: as if it had made it
            expectAnswer(connection, {PeerLookup::found, kOther, {}});
        }
        pair.client.reset();
        pollfd end{pair.server.get(), POLLIN, 0};
        ASSERT_EQ(::poll(&end, 1, 10'000), 1);
        expectAnswer(connection, kGone);
    }
}

TEST(PeerIdentity, OneWrongPartOfTheTupleIsNobody) {
    const LoopbackPair pair;
    const LoopbackConnection real = pair.asSeenByServer();
    const LoopbackConnection wrong[] = {
        {0x7F000002, real.peerPort, real.ownAddress, real.ownPort},
        {real.peerAddress, real.peerPort, 0x7F000002, real.ownPort},
        {real.peerAddress, real.peerPort, real.ownAddress, 1},
        // The kernel's look-up falls back to a listening socket on the peer's port.
        {real.ownAddress, real.ownPort, real.peerAddress, 1},
    };
    for (const auto& connection : wrong) expectAnswer(connection, kGone);
}

TEST(PeerIdentity, AnErrorSaysThatTheOtherEndIsGone) {
    const auto answer = SockDiagPeerIdentity().userBehind({0x7F000001, 1, 0x7F000001, 2});
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error(),
              (Error{"can't tell who is calling: the connection's other end is gone", 403}));
}

// 127.0.0.1:50000 (0xC350) called 127.0.0.1:7390 (0x1CDE); rows as a little-endian kernel prints.
TEST(ProcNetTable, Rows) {
    const PeerAnswer found{PeerLookup::found, 1000, {}};
    const std::string rest = " 01 00000000:00000000 00:00000000 00000000  1000        0 ";
    const std::string ends = "   4: 0100007F:C350 0100007F:1CDE";
    const std::string mapped = "0000000000000000FFFF00000100007F:";
    const std::tuple<const char*, std::string, PeerAnswer> cases[] = {
        {"found among others",
         "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  "
         "timeout "
         "inode\n   0: 00000000:1CDE 00000000:0000 0A 00000000:00000000 00:00000000 00000000     0 "
         "  "
         "     0 17 1\n" +
             ends + rest + "5071 1 0000 20 4 30 10 -1\n",
         found},
        {"last row without line end", ends + rest + "5071", found},
        {"closed by its process", ends + rest + "0 3 0000\n", kGone},
        {"cut off before the inode", ends + rest, kGone},
        {"the server's own end", "   4: 0100007F:1CDE 0100007F:C350" + rest + "5071 1\n", kGone},
        {"IPv4-mapped", "   4: " + mapped + "C350 " + mapped + "1CDE" + rest + "5071 1\n", found},
        {"user is no number", ends + " 01 0:0 00:0 0 10x0 0 5071\n", kGone},
        {"empty", "", kGone},
        {"only line ends", "\n\n\n", kGone},
    };
    for (const auto& [name, table, expected] : cases) {
        EXPECT_EQ(findInProcNet(table, {0x7F000001, 50000, 0x7F000001, 7390}), expected) << name;
    }
}

}  // namespace
}  // namespace tandrel
