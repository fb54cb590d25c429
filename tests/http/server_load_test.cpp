#include <atomic>
#include <condition_variable>
#include <mutex>
#include <thread>

#include <gtest/gtest.h>
#include <sys/resource.h>

#include "http/server.h"
#include "raw_client.h"
#include "support/eventually.h"

namespace tandrel {
namespace {

using test::exchange;
using test::firstLineOf;
using test::kOk;
using test::RawClient;
using test::threadsNamed;

constexpr auto kPatience = RawClient::kPatience;
constexpr std::string_view kGet = "GET /ok HTTP/1.1\r\n\r\n";
constexpr std::string_view kBlock = "POST /block HTTP/1.1\r\nContent-Length: 0\r\n\r\n";

// A handler whose "/block" waits until the test opens the gate or the client has gone.
class Gate {
 public:
    HTTPResponse handle(const HTTPRequest& request) {
        if (request.path != "/block") return HTTPResponse::json({{"ok", true}});
        std::unique_lock lock(mutex_);
        ++inside_;
        most = std::max<int>(most, inside_);
        changed_.notify_all();
        changed_.wait(lock, request.clientGone, [this] { return open_; });
        --inside_;
        const bool left = request.clientGone.stop_requested();
        left ? ++left_ : ++served;
        changed_.notify_all();
        return HTTPResponse::json({{"left", left}});
    }
    HTTPHandler handler() {
        return [this](const HTTPRequest& request) { return handle(request); };
    }
    void open() {
        std::lock_guard lock(mutex_);
        open_ = true;
        changed_.notify_all();
    }
    // Waits until that many handlers block; says whether they did.
    bool awaitInside(int count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kPatience, [&] { return inside_ == count; });
    }
    bool awaitLeft(int count) {
        std::unique_lock lock(mutex_);
        return changed_.wait_for(lock, kPatience, [&] { return left_ == count; });
    }
    std::atomic<int> served = 0;
    std::atomic<int> most = 0;

 private:
    std::mutex mutex_;
    std::condition_variable_any changed_;
    bool open_ = false;
    int inside_ = 0;
    int left_ = 0;
};

class ServedUnderLoad : public testing::Test {
 protected:
    static void SetUpTestSuite() {
        rlimit files{};
        ::getrlimit(RLIMIT_NOFILE, &files);
        files.rlim_cur = std::min<rlim_t>(files.rlim_max, 8192);
        ::setrlimit(RLIMIT_NOFILE, &files);
    }
    void serve(ServerLimits limits = {}) {
        server = std::make_unique<HTTPServer>(0, gate.handler(), ServerOptions{.limits = limits});
        ASSERT_TRUE(server->start());
    }
    std::vector<RawClient> clients(int count, std::string_view request) {
        std::vector<RawClient> made;
        for (int i = 0; i < count; ++i) made.emplace_back(server->port()).send(request);
        return made;
    }
    std::string get() { return firstLineOf(exchange(server->port(), kGet)); }
    // One whose request a handler has.
    RawClient blockedClient() {
        RawClient client(server->port());
        client.send(kBlock);
        EXPECT_TRUE(gate.awaitInside(1));
        return client;
    }
    static void expectReplies(std::vector<RawClient>& clients, std::string_view more = "") {
        for (RawClient& client : clients) EXPECT_EQ(firstLineOf(client.send(more).readAll()), kOk);
    }

    Gate gate;  // outlives the server, whose handlers use it
    std::unique_ptr<HTTPServer> server;
};

TEST_F(ServedUnderLoad, RunsAtMost256HandlersAndLosesNoRequestPastThat) {
    serve();
    auto blocked = clients(300, kBlock);
    ASSERT_TRUE(gate.awaitInside(256));
    EXPECT_LE(threadsNamed("pocketlink.http"), 258);
    auto waiting = clients(20, kGet);
    gate.open();
    expectReplies(blocked);
    expectReplies(waiting);
    EXPECT_EQ(gate.served, 300);
    EXPECT_EQ(gate.most, 256);
}

TEST_F(ServedUnderLoad, SpendsNoThreadOnAThousandWaitingConnections) {
    serve();
    auto idle = clients(500, "");
    auto slow = clients(500, "POST /ok HTTP/1.1\r\nContent-Length: 2\r\n\r\n{");
    EXPECT_EQ(get(), kOk);
    EXPECT_LE(threadsNamed("pocketlink.http"), 3);
    expectReplies(slow, "}");
    expectReplies(idle, kGet);
    EXPECT_LE(threadsNamed("pocketlink.http"), 3);
}

TEST_F(ServedUnderLoad, EndsThreadsThatHaveNothingToDo) {
    serve({.idleThread = std::chrono::milliseconds(1)});
    auto blocked = clients(50, kBlock);
    ASSERT_TRUE(gate.awaitInside(50));
    gate.open();
    for (RawClient& client : blocked) client.readAll();
    EXPECT_TRUE(eventually([] { return threadsNamed("pocketlink.http") <= 2; }));
    EXPECT_EQ(get(), kOk);
}

TEST_F(ServedUnderLoad, TellsTheHandlerThatItsClientHasGone) {
    serve();
    const std::pair<const char*, void (*)(RawClient& client)> rows[] = {
        {"closed", [](RawClient& client) { client.close(); }},
        {"reset", [](RawClient& client) { client.close(RawClient::Close::reset); }},
        {"finished sending", [](RawClient& client) { client.endSending(); }},
    };
    int left = 0;
    for (const auto& [name, leave] : rows) {
        SCOPED_TRACE(name);
        RawClient client = blockedClient();
        leave(client);
        EXPECT_TRUE(gate.awaitLeft(++left));
    }
    EXPECT_EQ(get(), kOk);
}

TEST_F(ServedUnderLoad, RepliesToAClientThatOnlyFinishedSendingAndWaitsForOneThatStays) {
    serve();
    EXPECT_EQ(test::bodyOf(blockedClient().endSending().readAll()), "{\"left\":true}");
    RawClient client = blockedClient();
    client.send("more bytes than were announced");
    EXPECT_EQ(get(), kOk);
    gate.open();
    EXPECT_EQ(test::bodyOf(client.readAll()), "{\"left\":false}");
}

TEST_F(ServedUnderLoad, StopsWithEveryKindOfConnectionOpen) {
    serve({.handlers = 8});
    auto idle = clients(20, "");
    auto slow = clients(20, "POST /ok HTTP/1.1\r\nContent-");
    auto blocked = clients(8, kBlock);
    ASSERT_TRUE(gate.awaitInside(8));
    auto waiting = clients(20, kBlock);
    server->stop();
    EXPECT_EQ(threadsNamed("pocketlink.http"), 0);
    EXPECT_TRUE(gate.awaitLeft(8));
    for (auto* group : {&idle, &slow, &waiting}) {
        for (RawClient& client : *group) EXPECT_TRUE(client.closedWithoutReply());
    }
    EXPECT_FALSE(RawClient(server->port()));
}

// Each round stops at another moment of the same traffic.
TEST_F(ServedUnderLoad, StopsInTheMiddleOfTraffic) {
    for (int round = 0; round < 30; ++round) {
        Gate quick;
        HTTPServer busy(0, quick.handler());
        ASSERT_TRUE(busy.start());
        std::atomic<int> replies = 0;
        std::atomic<bool> odd = false;
        std::vector<std::jthread> callers;
        for (int i = 0; i < 4; ++i) {
            callers.emplace_back([&] {
                while (RawClient client{busy.port()}) {
                    const std::string line = firstLineOf(client.send(kGet).readAll());
                    if (line != kOk && !line.empty() && line != "<reset>") odd = true;
                    ++replies;
                    replies.notify_all();
                }
            });
        }
        while (replies < round) replies.wait(replies.load());
        busy.stop();
        callers.clear();
        EXPECT_FALSE(odd);
    }
}

TEST_F(ServedUnderLoad, MakesRoomByTheConnectionThatWaitedLongest) {
    serve({.connections = 10, .quietBeforeGivingWay = {}});
    auto idle = clients(10, "");
    for (int i = 0; i < 5; ++i) EXPECT_EQ(get(), kOk);
    EXPECT_EQ(idle.front().readAll(), "");
    EXPECT_EQ(firstLineOf(idle.back().send(kGet).readAll()), kOk);
}

TEST_F(ServedUnderLoad, LetsNewConnectionsWaitWhileFull) {
    serve({.connections = 10});
    auto idle = clients(10, "");
    RawClient waiting(server->port());
    waiting.send(kGet);
    EXPECT_EQ(firstLineOf(idle[3].send(kGet).readAll()), kOk);
    EXPECT_EQ(firstLineOf(waiting.readAll()), kOk);
}

TEST_F(ServedUnderLoad, BoundsTheBytesOfUnfinishedRequests) {
    serve({.bufferedBytes = 1 << 20});
    const std::string part = "POST /ok HTTP/1.1\r\nContent-Length: 500000\r\n\r\n";
    RawClient first(server->port());
    first.send(part).send(std::string(400'000, ' '));
    RawClient tooMuch(server->port());
    tooMuch.send("POST /ok HTTP/1.1\r\nContent-Length: 2000000\r\n\r\n");
    EXPECT_TRUE(tooMuch.send(std::string(1'500'000, ' ')).closedWithoutReply());
    EXPECT_EQ(firstLineOf(first.send(std::string(100'000, ' ')).readAll()), kOk);
    EXPECT_EQ(get(), kOk);
}

Duration processorTime() {
    rusage used{};
    ::getrusage(RUSAGE_SELF, &used);
    return std::chrono::seconds(used.ru_utime.tv_sec + used.ru_stime.tv_sec) +
           std::chrono::microseconds(used.ru_utime.tv_usec + used.ru_stime.tv_usec);
}

TEST_F(ServedUnderLoad, NeitherSpinsNorLosesAConnectionWithoutDescriptors) {
    serve();
    RawClient late;
    rlimit before{};
    ::getrlimit(RLIMIT_NOFILE, &before);
    const rlimit none{0, before.rlim_max};
    ::setrlimit(RLIMIT_NOFILE, &none);
    constexpr std::chrono::milliseconds kWait(400);
    const Duration start = processorTime();
    EXPECT_EQ(late.connect(server->port()).send(kGet).waitAtMost(kWait).readAll(), "<nothing>");
    EXPECT_LT(processorTime() - start, kWait / 4);
    ::setrlimit(RLIMIT_NOFILE, &before);
    EXPECT_EQ(firstLineOf(late.waitAtMost(kPatience).readAll()), kOk);
}

}  // namespace
}  // namespace tandrel
