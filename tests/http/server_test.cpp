#include "http/server.h"

#include <atomic>
#include <sstream>

#include <gtest/gtest.h>

#include "base/file.h"
#include "base/log.h"
#include "raw_client.h"
#include "support/temporary_folder.h"

namespace tandrel {
namespace {

using test::bodyOf;
using test::exchange;
using test::firstLineOf;
using test::kOk;
using test::RawClient;

constexpr const char* kRefused = "HTTP/1.1 403 Error";

class Served : public testing::Test {
 protected:
    void serve(HTTPHandler handler, ServerOptions options = {}) {
        server = std::make_unique<HTTPServer>(0, std::move(handler), options);
        ASSERT_TRUE(server->start());
    }
    std::uint16_t port() const { return server->port(); }
    std::string get(std::string_view path) const {
        return exchange(port(), "GET " + std::string(path) + " HTTP/1.1\r\n\r\n");
    }

    std::atomic<int> handled = 0;
    // Says back what it was asked.
    const HTTPHandler echo = [this](const HTTPRequest& request) {
        ++handled;
        return HTTPResponse::json({{"method", request.method},
                                   {"path", request.path},
                                   {"query", request.query},
                                   {"body", request.body}});
    };
    std::unique_ptr<HTTPServer> server;
};

TEST_F(Served, RepliesOnceAndCloses) {
    serve(echo);
    EXPECT_EQ(
        exchange(port(), "POST /tap?device=&x HTTP/1.1\r\nContent-Length: 7\r\n\r\n{\"x\":1}"),
        "HTTP/1.1 200 OK\r\nContent-Type: application/json\r\nContent-Length: 75\r\n"
        "Connection: close\r\n\r\n"
        "{\"body\":{\"x\":1},\"method\":\"POST\",\"path\":\"/tap\","
        "\"query\":{\"device\":\"\",\"x\":\"\"}}");
}

TEST_F(Served, ClosesWithoutAWordOnWhatIsNoRequestOrTooLarge) {
    serve(echo);
    for (const char* text : {"", "GET /status HTTP/1.1\r\n", "GET\r\n\r\n", "\x16\x03\x01\x02",
                             "POST / HTTP/1.1\r\nContent-Length: 9\r\n\r\n{}"}) {
        RawClient client(port());
        EXPECT_TRUE(client.send(text).endSending().closedWithoutReply()) << text;
    }
    for (const char* start :
         {"", "GET\r\n\r\n", "POST / HTTP/1.1\r\nContent-Length: 99999999\r\n\r\n"}) {
        RawClient client(port());
        EXPECT_TRUE(client.send(start).send(std::string(10 << 20, 'x')).closedWithoutReply())
            << start;
    }
    EXPECT_EQ(handled, 0);
    EXPECT_EQ(firstLineOf(get("/after")), kOk);
}

TEST_F(Served, GivesTheReplyToAClientThatSendsTooMuch) {
    serve(echo);
    const std::pair<const char*, std::string> rows[] = {
        {"extra bytes",
         "POST /a HTTP/1.1\r\nContent-Length: 2\r\n\r\n{}" + std::string(3 << 20, 'x')},
        {"a body without length", "POST /a HTTP/1.1\r\n\r\n" + std::string(3 << 20, 'x')},
        {"a second request", "GET /a HTTP/1.1\r\n\r\nGET /b HTTP/1.1\r\n\r\n"},
    };
    for (const auto& [name, request] : rows) {
        SCOPED_TRACE(name);
        RawClient client(port());
        const std::string reply = client.send(request).endSending().readAll();
        EXPECT_EQ(firstLineOf(reply), kOk);
        EXPECT_NE(reply.find("\"path\":\"/a\""), std::string::npos);
        EXPECT_EQ(reply.find("<reset>"), std::string::npos);
        EXPECT_EQ(reply.find("/b"), std::string::npos);
    }
}

TEST_F(Served, RefusesWebPagesBeforeTheHandler) {
    serve(echo);
    for (const char* request : {"POST /tap HTTP/1.1\r\nHost: evil.example\r\n\r\n",
                                "POST /tap HTTP/1.1\r\nSec-Fetch-Site: cross-site\r\n\r\n",
                                "OPTIONS /tap HTTP/1.1\r\nHost: localhost\r\n\r\n"}) {
        const std::string reply = exchange(port(), request);
        EXPECT_EQ(firstLineOf(reply), kRefused) << request;
        EXPECT_TRUE(Json::parse(bodyOf(reply)).contains("error"));
        EXPECT_EQ(reply.find("Access-Control"), std::string::npos);
    }
    EXPECT_EQ(handled, 0);
}

// Remembers what it was asked about, so that the test can compare it with the real connection.
class StrangePeers final : public PeerIdentity {
 public:
    Result<uid_t> userBehind(const LoopbackConnection& connection) override {
        asked = connection;
        return 1001;
    }
    uid_t ownUser() const override { return 1000; }
    LoopbackConnection asked;
};

TEST_F(Served, RefusesAnotherUserWithoutReadingTheRequest) {
    StrangePeers peers;
    serve(echo, {.peers = &peers});
    RawClient client(port());
    const std::string reply = client.readAll();
    EXPECT_EQ(firstLineOf(reply), kRefused);
    EXPECT_EQ(bodyOf(reply),
              "{\"error\":\"Refused: another user of this computer is calling. Run the program as "
              "the user who runs Tandrel.\"}");
    EXPECT_EQ(peers.asked.peerAddress, 0x7f000001u);
    EXPECT_EQ(peers.asked.ownAddress, 0x7f000001u);
    EXPECT_EQ(peers.asked.ownPort, port());
    EXPECT_EQ(peers.asked.peerPort, client.ownPort());

    RawClient chatty(port());
    EXPECT_EQ(firstLineOf(chatty.send("POST / HTTP/1.1\r\n\r\n" + std::string(1 << 20, 'x'))
                              .endSending()
                              .readAll()),
              kRefused);
}

TEST_F(Served, WritesWithTheGivenWriter) {
    serve([](const HTTPRequest&) { return HTTPResponse::error("no capture", 503); },
          {.writer = airplayReplyWriter});
    EXPECT_EQ(firstLineOf(get("/frame.png")), "HTTP/1.1 503 Error");
}

TEST_F(Served, TurnsAnExceptionIntoA500) {
    serve([](const HTTPRequest& request) -> HTTPResponse {
        return HTTPResponse::json({{"x", request.body.at("x")}});
    });
    EXPECT_EQ(firstLineOf(get("/")), "HTTP/1.1 500 Error");
    EXPECT_EQ(firstLineOf(get("/")), "HTTP/1.1 500 Error");
}

TEST_F(Served, EndsAReplyThatNobodyTakes) {
    serve(
        [](const HTTPRequest&) {
            HTTPResponse frame;
            frame.body = Bytes(32 << 20, 'x');
            return frame;
        },
        {.limits = {.stalledReply = std::chrono::milliseconds(1)}});
    RawClient client(port());
    client.send("GET / HTTP/1.1\r\n\r\n").awaitPeerClose();
    EXPECT_LT(client.readAll().size(), 32u << 20);
}

TEST_F(Served, SaysAndLogsWhatBecomesOfTheListener) {
    const TemporaryFolder folder;
    const auto path = folder.path() / "log";
    const auto file = std::make_shared<AppLog>(path.string());
    AppLog::setShared(file);
    serve(echo);
    HTTPServer second(port(), echo);
    const auto started = second.start();
    ASSERT_FALSE(started);
    EXPECT_EQ(started.error().message, "Address already in use");
    EXPECT_FALSE(server->start());
    EXPECT_EQ(firstLineOf(get("/")), kOk);
    server->stop();
    server->stop();
    AppLog::setShared(nullptr);
    file->flush();
    std::string messages;
    std::istringstream lines(readFile(path, 10'000).value_or(""));
    for (std::string line; std::getline(lines, line);)
        messages += line.substr(line.find(']')) + "\n";
    EXPECT_EQ(messages, "] http ready\n] http failed: Address already in use\n] http cancelled\n");
}

TEST_F(Served, ListensOnLoopbackOnlyAndFreesThePortAtOnce) {
    serve(echo);
    constexpr std::uint32_t kElsewhere =
        INADDR_LOOPBACK + 1;  // taken by a listener on all addresses
    EXPECT_FALSE(RawClient().connect(port(), kElsewhere));
    EXPECT_EQ(firstLineOf(get("/")), kOk);
    server->stop();
    EXPECT_FALSE(RawClient(port()));
    HTTPServer next(port(), echo);
    next.stop();
    EXPECT_TRUE(next.start());
}

}  // namespace
}  // namespace tandrel
