#include "http/client.h"

#include <atomic>
#include <random>

#include <gtest/gtest.h>

#include "http/reply_parser.h"
#include "http/server.h"
#include "http/target.h"
#include "raw_client.h"
#include "support/eventually.h"

namespace tandrel {
namespace {

TEST(LoopbackUrl, ReadsUrlsOfThisComputer) {
    const std::pair<const char*, const char*> rows[] = {
        {"http://127.0.0.1:7390", "http://127.0.0.1:7390"},
        {"HTTP://LocalHost:7390/", "http://localhost:7390"},
        {"http://[::1]:8000/a/b//", "http://[::1]:8000/a/b"},
        {"http://127.0.0.1", "http://127.0.0.1:80"},
    };
    for (const auto& [text, whole] : rows) EXPECT_EQ(LoopbackUrl::parse(text)->text(), whole);
    for (const char* text :
         {"", "127.0.0.1:7390", "https://127.0.0.1:7390", "http://", "http://10.0.0.1:7390",
          "http://localhost.evil.example", "http://user@127.0.0.1",
          "http://127.0.0.1:", "http://127.0.0.1:0", "http://127.0.0.1:65536",
          "http://127.0.0.1:-1", "http://127.0.0.1:80x", "http://[::1", "http://[::1]7390",
          "http://127.0.0.1/a b", "http://127.0.0.1/a\r\nX: y", "http://127.0.0.1?a=1"}) {
        EXPECT_FALSE(LoopbackUrl::parse(text)) << text;
    }
}

TEST(ReplyParser, ReadsRepliesHoweverTheyAreCut) {
    using State = ReplyParser::State;
    const std::tuple<const char*, std::string, State, State> rows[] = {
        {"length", "HTTP/1.1 200 OK\r\nContent-Length: 2\r\n\r\n{}", State::complete, {}},
        {"too short", "HTTP/1.1 200 OK\r\nContent-Length: 3\r\n\r\n{}", State::incomplete,
         State::malformed},
        {"until close", "HTTP/1.0 200\r\n\r\n{}", State::incomplete, State::complete},
        {"no head", "HTTP/1.1 200 OK\r\n", State::incomplete, State::malformed},
        {"nothing", "", State::incomplete, State::malformed},
        {"other protocol", "SSH-2.0-x\r\n\r\n", State::malformed, {}},
        {"no code", "HTTP/1.1 OK\r\n\r\n", State::malformed, {}},
        {"long code", "HTTP/1.1 2000 OK\r\n\r\n", State::malformed, {}},
        {"huge length",
         "HTTP/1.1 200 OK\r\nContent-Length: 99999999999999999999\r\n\r\n",
         State::tooLarge,
         {}},
        {"huge body", "HTTP/1.1 200 OK\r\n\r\n" + std::string(1001, 'x'), State::tooLarge, {}},
        {"huge head", std::string(1001, 'x'), State::tooLarge, {}},
    };
    for (const auto& [name, text, afterText, afterClose] : rows) {
        for (const std::size_t size : {1uz, 3uz, 2000uz}) {
            SCOPED_TRACE(std::string(name) + " in pieces of " + std::to_string(size));
            ReplyParser parser(1000);
            State state = State::incomplete;
            for (std::size_t at = 0; at < text.size() && state == State::incomplete; at += size) {
                state = parser.append(std::string_view(text).substr(at, size));
            }
            EXPECT_EQ(state, afterText);
            if (state == State::incomplete) {
                EXPECT_EQ(parser.finish(), afterClose);
            }
        }
    }
}

// A handler that never replies.
HTTPResponse awaitGone(const HTTPRequest& request) {
    eventually([&] { return request.clientGone.stop_requested(); });
    return {};
}

class Client : public testing::Test {
 protected:
    void serve(HTTPHandler handler) {
        server = std::make_unique<HTTPServer>(0, std::move(handler));
        ASSERT_TRUE(server->start());
        url = LoopbackUrl::ofPort(server->port());
    }
    std::unique_ptr<HTTPServer> server;
    LoopbackUrl url;
};

TEST_F(Client, GetsAndPosts) {
    serve([](const HTTPRequest& request) {
        auto response = HTTPResponse::json({{"body", request.body}, {"q", request.query}}, 423);
        response.headers["X-Device"] = request.method + " " + request.path;
        return response;
    });
    const auto got = httpGet(url, "/status?device=" + percentEncoded("a b&c"));
    ASSERT_TRUE(got) << got.error().message;
    EXPECT_EQ(got->status, 423);
    EXPECT_EQ(got->contentType, "application/json");
    EXPECT_EQ(got->headers.at("x-device"), "GET /status");
    EXPECT_EQ(toText(got->body), "{\"body\":{},\"q\":{\"device\":\"a b&c\"}}");

    const auto posted = httpPost(url, "/tap", {{"x", 0.5}});
    ASSERT_TRUE(posted) << posted.error().message;
    EXPECT_EQ(posted->headers.at("x-device"), "POST /tap");
    EXPECT_EQ(posted->json(), Json::parse(R"({"body":{"x":0.5},"q":{}})"));
}

TEST_F(Client, TakesAndSendsLargeBodies) {
    Bytes body(12'000'000);
    std::mt19937 random(1);
    for (auto& byte : body) byte = static_cast<std::uint8_t>(random());
    serve([body](const HTTPRequest& request) {
        HTTPResponse response;
        response.headers["X-Length"] = std::to_string(request.body.value("text", "").size());
        response.body = body;
        return response;
    });
    const auto whole = httpPost(url, "/", {{"text", std::string(6'000'000, 'x')}},
                                {.timeout = std::chrono::minutes(2)});
    ASSERT_TRUE(whole) << whole.error().message;
    EXPECT_EQ(whole->headers.at("x-length"), "6000000");
    EXPECT_TRUE(whole->body == body);
    const auto bounded = httpGet(url, "/", {.mostBytes = 1'000'000});
    ASSERT_FALSE(bounded);
    EXPECT_EQ(bounded.error().status, kBadReply);
}

TEST_F(Client, RefusesATargetThatWouldChangeTheRequest) {
    serve([](const HTTPRequest&) { return HTTPResponse(); });
    for (const char* target : {"", "status", "/a b", "/a\r\nOrigin: x", "/\u00e9"}) {
        EXPECT_FALSE(httpGet(url, target)) << target;
        EXPECT_FALSE(httpPost(url, target, Json::object())) << target;
    }
}

TEST_F(Client, SaysWhyThereIsNoReply) {
    serve(awaitGone);
    const auto late = httpGet(url, "/", {.timeout = std::chrono::milliseconds(50)});
    ASSERT_FALSE(late);
    EXPECT_EQ(late.error().status, kTimedOut);
    EXPECT_EQ(late.error().message, url.text() + " did not answer within 0.05 s");

    server->stop();
    const auto refused = httpGet(url, "/");
    ASSERT_FALSE(refused);
    EXPECT_EQ(refused.error().status, kNotReachable);
    EXPECT_EQ(refused.error().message, "can't reach " + url.text() + ": Connection refused");
}

// The server must notice, so that a question to the owner is withdrawn with the request.
TEST_F(Client, EndsARequestUnderWayByClosing) {
    std::stop_source stop;
    std::atomic<bool> noticed = false;
    serve([&](const HTTPRequest& request) {
        stop.request_stop();
        HTTPResponse late = awaitGone(request);
        noticed = true;
        noticed.notify_all();
        return late;
    });
    const auto cancelled = httpGet(url, "/", {.stop = stop.get_token()});
    ASSERT_FALSE(cancelled);
    EXPECT_EQ(cancelled.error().status, kCancelled);
    noticed.wait(false);

    EXPECT_EQ(httpGet(url, "/", {.stop = stop.get_token()}).error().status, kCancelled);
}

}  // namespace
}  // namespace tandrel
