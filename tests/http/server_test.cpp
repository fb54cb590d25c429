#include "http/server.h"

#include <atomic>
#include <filesystem>
#include <future>
#include <random>
#include <sstream>

#include <gtest/gtest.h>
#include <unistd.h>

#include "base/file.h"
#include "base/log.h"
#include "raw_client.h"

namespace tandrel {
namespace {

using test::bodyOf;
using test::exchange;
using test::firstLineOf;
using test::RawClient;

// Says back what it was asked.
HTTPResponse echo(const HTTPRequest& request) {
    return HTTPResponse::json({{"method", request.method},
                               {"path", request.path},
                               {"query", request.query},
                               {"body", request.body}});
}

class Served : public testing::Test {
 protected:
    void serve(HTTPHandler handler, ServerOptions options = {}) {
        server = std::make_unique<HTTPServer>(0, std::move(handler), options);
        const auto started = server->start();
        ASSERT_TRUE(started) << started.error().message;
    }
    std::uint16_t port() const { return server->port(); }
    std::string get(std::string_view path) const {
        return exchange(port(), "GET " + std::string(path) + " HTTP/1.1\r\n\r\n");
    }

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

TEST_F(Served, AnswersARequestCutAnywhere) {
    serve(echo);
    const std::string request =
        "POST /type HTTP/1.1\r\nHost: localhost\r\nContent-Length: 15\r\n\r\n{\"text\":\"a\\nb\"}";
    std::mt19937 random(7390);
    for (int round = 0; round < 50; ++round) {
        RawClient client(port());
        std::string_view rest = request;
        while (!rest.empty()) {
            const std::size_t size = 1 + random() % (round % 2 == 0 ? 4 : rest.size());
            client.send(rest.substr(0, size));
            rest.remove_prefix(std::min(size, rest.size()));
        }
        ASSERT_EQ(
            bodyOf(client.readAll()),
            "{\"body\":{\"text\":\"a\\nb\"},\"method\":\"POST\",\"path\":\"/type\",\"query\":{}}")
            << "round " << round;
    }
}

TEST_F(Served, ClosesWithoutAWordOnWhatIsNoRequest) {
    std::atomic<int> handled = 0;
    serve([&](const HTTPRequest& request) {
        ++handled;
        return echo(request);
    });
    const std::string cases[] = {
        "",
        "GET /status HTTP/1.1\r\n",
        "GET\r\n\r\n",
        "GET /\xff HTTP/1.1\r\n\r\n",
        "POST / HTTP/1.1\r\nContent-Length: 9\r\n\r\n{}",
        "POST / HTTP/1.1\r\nContent-Length: 99999999999999999999\r\n\r\n{}",
        std::string("\x16\x03\x01\x02\x00\x01\x00", 7),
    };
    for (const std::string& text : cases) {
        RawClient client(port());
        EXPECT_TRUE(client.send(text).endSending().closedWithoutReply()) << text;
    }
    EXPECT_EQ(handled, 0);
}

TEST_F(Served, ClosesOnAnOversizedRequestWithoutAWord) {
    serve(echo);
    for (const char* start :
         {"", "GET\r\n\r\n", "POST / HTTP/1.1\r\nContent-Length: 99999999\r\n\r\n"}) {
        RawClient client(port());
        EXPECT_TRUE(client.send(start).send(std::string(10 << 20, 'x')).closedWithoutReply())
            << start;
    }
    EXPECT_EQ(firstLineOf(get("/after")), "HTTP/1.1 200 OK");
}

TEST_F(Served, GivesTheReplyToAClientThatSendsTooMuch) {
    serve(echo);
    const struct {
        const char* name;
        std::string request;
    } rows[] = {
        {"extra bytes",
         "POST /a HTTP/1.1\r\nContent-Length: 2\r\n\r\n{}" + std::string(3 << 20, 'x')},
        {"a body without length", "POST /a HTTP/1.1\r\n\r\n" + std::string(3 << 20, 'x')},
        {"a second request", "GET /a HTTP/1.1\r\n\r\nGET /b HTTP/1.1\r\n\r\n"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        RawClient client(port());
        const std::string reply = client.send(row.request).endSending().readAll();
        EXPECT_EQ(firstLineOf(reply), "HTTP/1.1 200 OK");
        EXPECT_NE(reply.find("\"path\":\"/a\""), std::string::npos);
        EXPECT_EQ(reply.find("<reset>"), std::string::npos);
        EXPECT_EQ(reply.find("/b"), std::string::npos);
    }
}

TEST_F(Served, AnswersAClientThatHasFinishedSending) {
    serve(echo);
    RawClient client(port());
    EXPECT_EQ(firstLineOf(client.send("GET / HTTP/1.1\r\n\r\n").endSending().readAll()),
              "HTTP/1.1 200 OK");
}

TEST_F(Served, RefusesWebPagesBeforeTheHandler) {
    std::atomic<int> handled = 0;
    serve([&](const HTTPRequest& request) {
        ++handled;
        return echo(request);
    });
    for (const char* header : {"Host: evil.example", "Origin: http://evil.example", "Origin: null",
                               "Sec-Fetch-Site: cross-site"}) {
        const std::string reply =
            exchange(port(), std::string("POST /tap HTTP/1.1\r\n") + header + "\r\n\r\n");
        EXPECT_EQ(firstLineOf(reply), "HTTP/1.1 403 Error") << header;
        EXPECT_TRUE(Json::parse(bodyOf(reply)).contains("error"));
        EXPECT_EQ(reply.find("Access-Control"), std::string::npos);
    }
    EXPECT_EQ(firstLineOf(exchange(port(), "OPTIONS /tap HTTP/1.1\r\nHost: localhost\r\n\r\n")),
              "HTTP/1.1 403 Error");
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
    EXPECT_EQ(firstLineOf(reply), "HTTP/1.1 403 Error");
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
              "HTTP/1.1 403 Error");
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

TEST_F(Served, SendsALargeBodyWhole) {
    std::string body(12'000'000, '\0');
    std::mt19937 random(1);
    for (char& c : body) c = static_cast<char>(random());
    serve([&](const HTTPRequest&) {
        HTTPResponse frame;
        frame.contentType = "image/png";
        frame.body = toBytes(body);
        return frame;
    });
    EXPECT_EQ(bodyOf(get("/frame")), body);
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

TEST(HTTPServerStart, SaysWhenThePortIsInUse) {
    HTTPServer first(0, echo);
    ASSERT_TRUE(first.start());
    HTTPServer second(first.port(), echo);
    const auto started = second.start();
    ASSERT_FALSE(started);
    EXPECT_EQ(started.error().message, "Address already in use");
    EXPECT_FALSE(first.start());
    EXPECT_EQ(firstLineOf(exchange(first.port(), "GET / HTTP/1.1\r\n\r\n")), "HTTP/1.1 200 OK");
}

TEST(HTTPServerStart, LogsWhatBecomesOfTheListener) {
    const std::string path = testing::TempDir() + "tandrel-http-log-" + std::to_string(::getpid());
    auto file = std::make_shared<AppLog>(path);
    AppLog::setShared(file);
    HTTPServer first(0, echo);
    ASSERT_TRUE(first.start());
    HTTPServer second(first.port(), echo);
    ASSERT_FALSE(second.start());
    first.stop();
    first.stop();
    AppLog::setShared(nullptr);
    file->flush();
    std::string messages;
    std::istringstream lines(readFile(path, 10'000).value_or(""));
    for (std::string line; std::getline(lines, line);)
        messages += line.substr(line.find(']')) + "\n";
    EXPECT_EQ(messages, "] http ready\n] http failed: Address already in use\n] http cancelled\n");
    std::filesystem::remove(path);
}

TEST(HTTPServerStart, ListensOnLoopbackOnly) {
    HTTPServer server(0, echo);
    ASSERT_TRUE(server.start());
    EXPECT_EQ(test::listenersOf(server.port()), std::vector<std::string>{"0100007F"});
}

TEST(HTTPServerStop, FreesThePortAtOnceAndMayBeRepeated) {
    HTTPServer server(0, echo);
    server.stop();
    ASSERT_TRUE(server.start());
    const std::uint16_t port = server.port();
    EXPECT_EQ(firstLineOf(exchange(port, "GET / HTTP/1.1\r\n\r\n")), "HTTP/1.1 200 OK");
    server.stop();
    server.stop();
    EXPECT_FALSE(RawClient(port).connected());
    HTTPServer next(port, echo);
    EXPECT_TRUE(next.start());
}

}  // namespace
}  // namespace tandrel
