#include "platform/linux/sock_diag_peer_identity.h"

#include <gtest/gtest.h>
#include <poll.h>
#include <unistd.h>

#include "platform/linux/loopback_pair.h"

namespace tandrel {
namespace {

using Way = PeerAnswer (*)(const LoopbackConnection&);

struct NamedWay {
    const char* name;
    Way ask;
};

// Both ways of asking must give the same answers about real connections.
class PeerIdentityTest : public testing::TestWithParam<NamedWay> {
 protected:
    PeerAnswer ask(const LoopbackConnection& connection) { return GetParam().ask(connection); }
    static PeerAnswer found(uid_t user) { return {PeerLookup::found, user, {}}; }
    static PeerAnswer gone() { return {PeerLookup::gone, 0, {}}; }
};

INSTANTIATE_TEST_SUITE_P(Ways, PeerIdentityTest,
                         testing::Values(NamedWay{"sockDiag", askSockDiag},
                                         NamedWay{"procNet", askProcNet}),
                         [](const auto& way) { return way.param.name; });

TEST_P(PeerIdentityTest, TellsTheUserOfAnOpenPeer) {
    for (const auto client : {LoopbackPair::Client::ipv4, LoopbackPair::Client::mapped}) {
        const LoopbackPair pair(client);
        EXPECT_EQ(ask(pair.asSeenByServer()), found(::geteuid()));
    }
}

TEST_P(PeerIdentityTest, TellsAnotherUserApart) {
    if (::geteuid() != 0) GTEST_SKIP() << "only root can make another user's socket";
    constexpr uid_t kOther = 65534;
    const LoopbackPair pair;
    ASSERT_EQ(::fchown(pair.client.get(), kOther, kOther), 0);  // as if that user had made it
    EXPECT_EQ(ask(pair.asSeenByServer()), found(kOther));
}

TEST_P(PeerIdentityTest, AClientThatOnlyFinishedSendingIsStillThere) {
    const LoopbackPair pair;
    ::shutdown(pair.client.get(), SHUT_WR);
    EXPECT_EQ(ask(pair.asSeenByServer()), found(::geteuid()));
}

TEST_P(PeerIdentityTest, AClosedClientIsNobody) {
    LoopbackPair pair;
    pair.client.reset();
    pollfd end{pair.server.get(), POLLIN, 0};
    ASSERT_EQ(::poll(&end, 1, 10'000), 1);
    EXPECT_EQ(ask(pair.asSeenByServer()), gone());
}

TEST_P(PeerIdentityTest, OneWrongPartOfTheTupleIsNobody) {
    const LoopbackPair pair;
    const LoopbackConnection real = pair.asSeenByServer();
    auto otherPeer = real;
    otherPeer.peerAddress = 0x7F000002;
    auto otherOwn = real;
    otherOwn.ownAddress = 0x7F000002;
    auto otherOwnPort = real;
    otherOwnPort.ownPort = 1;
    EXPECT_EQ(ask(otherPeer), gone());
    EXPECT_EQ(ask(otherOwn), gone());
    EXPECT_EQ(ask(otherOwnPort), gone());
}

// The kernel's look-up falls back to a listening socket on the peer's port.
TEST_P(PeerIdentityTest, AListenerOnThePeersPortIsNotThePeer) {
    const LoopbackPair pair;
    const LoopbackConnection real = pair.asSeenByServer();
    EXPECT_EQ(ask({real.ownAddress, real.ownPort, real.peerAddress, 1}), gone());
}

TEST(PeerIdentity, AnErrorSaysThatTheOtherEndIsGone) {
    const auto answer = SockDiagPeerIdentity().userBehind({0x7F000001, 1, 0x7F000001, 2});
    ASSERT_FALSE(answer);
    EXPECT_EQ(answer.error(),
              (Error{"can't tell who is calling: the connection's other end is gone", 403}));
}

constexpr const char* kHead =
    "  sl  local_address rem_address   st tx_queue rx_queue tr tm->when retrnsmt   uid  timeout "
    "inode\n";

struct TableCase {
    const char* name;
    std::string table;
    PeerAnswer expected;
};

// 127.0.0.1:50000 (0xC350) called 127.0.0.1:7390 (0x1CDE); rows as a little-endian kernel prints.
TEST(ProcNetTable, Rows) {
    const PeerAnswer gone{PeerLookup::gone, 0, {}};
    const std::string rest = " 01 00000000:00000000 00:00000000 00000000  1000        0 ";
    const std::string row = "   4: 0100007F:C350 0100007F:1CDE" + rest;
    const TableCase cases[] = {
        {"found among others",
         kHead +
             std::string("   0: 00000000:1CDE 00000000:0000 0A 00000000:00000000 00:00000000 "
                         "00000000     0        0 17 1\n") +
             row + "5071 1 0000 20 4 30 10 -1\n",
         {PeerLookup::found, 1000, {}}},
        {"last row without line end", row + "5071", {PeerLookup::found, 1000, {}}},
        {"closed by its process", row + "0 3 0000\n", gone},
        {"cut off before the inode", "   4: 0100007F:C350 0100007F:1CDE" + rest, gone},
        {"the server's own end", "   4: 0100007F:1CDE 0100007F:C350" + rest + "5071 1\n", gone},
        {"IPv4-mapped",
         "   4: 0000000000000000FFFF00000100007F:C350 0000000000000000FFFF00000100007F:1CDE" +
             rest + "5071 1\n",
         {PeerLookup::found, 1000, {}}},
        {"user is no number", "   4: 0100007F:C350 0100007F:1CDE 01 0:0 00:0 0 10x0 0 5071\n",
         gone},
        {"empty", "", gone},
        {"only line ends", "\n\n\n", gone},
    };
    for (const auto& [name, table, expected] : cases) {
        EXPECT_EQ(findInProcNet(table, {0x7F000001, 50000, 0x7F000001, 7390}), expected) << name;
    }
}

}  // namespace
}  // namespace tandrel
