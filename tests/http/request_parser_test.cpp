#include "http/request_parser.h"

#include <random>

#include <gtest/gtest.h>

namespace tandrel {
namespace {

using State = RequestParser::State;

std::string headerBlock(std::string_view headers) {
    return "POST /tap HTTP/1.1\r\n" + std::string(headers) + "\r\n";
}

struct Parsed {
    State state;
    HTTPRequest request;
};

Parsed parse(std::string_view text) {
    RequestParser parser;
    const State state = parser.append(text);
    if (state != State::complete) return {state, {}};
    return {state, parser.request()};
}

Json bodyOf(const std::string& headers, const std::string& body) {
    const Parsed parsed = parse(headerBlock(headers) + body);
    EXPECT_EQ(parsed.state, State::complete) << headers << body.substr(0, 80);
    return parsed.request.body;
}

TEST(RequestParser, ReadsBodiesByTheirLength) {
    const std::string body = "{\"x\":1}";
    for (const char* headers : {"Content-Length: 7\r\n", "CONTENT-LENGTH:7\r\n",
                                "Content-Length: +7\r\n", "Content-Length: 007\r\n",
                                "Content-Length: \t 7 \t\r\n", "odd\r\nContent-Length: 7\r\n"}) {
        EXPECT_EQ(bodyOf(headers, body), Json({{"x", 1}})) << headers;
        EXPECT_EQ(bodyOf(headers, body + "{\"y\":2}"), Json({{"x", 1}})) << headers;
    }
    for (const char* headers :
         {"", "Content-Length: abc\r\n", "Content-Length: 7abc\r\n", "Content-Length:\r\n",
          "Content-Length: -7\r\n", "Content-Length: 6\r\n"}) {
        EXPECT_EQ(bodyOf(headers, body), Json::object()) << headers;
    }
    for (const std::string& odd :
         {std::string("[1,2,3]"), std::string("\"x\""), std::string("{\"x\":1,"),
          std::string("{\"x\":\"\xff\"}"), std::string("{\"x\":1e999}"),
          "{\"x\":" + std::string(200'000, '[')}) {
        const auto length = "Content-Length: " + std::to_string(odd.size()) + "\r\n";
        EXPECT_EQ(bodyOf(length, odd), Json::object()) << odd.substr(0, 80);
    }
}

TEST(RequestParser, TakesTheFirstTwoWordsOfTheLine) {
    const std::tuple<const char*, const char*, const char*> rows[] = {
        {"GET /status HTTP/1.1", "GET", "/status"},
        {"GET /status", "GET", "/status"},
        {"  GET   /status  ", "GET", "/status"},
        {"get /a b c d", "get", "/a"},
        {"GET \t /a", "GET", "\t"},
    };
    for (const auto& [line, method, path] : rows) {
        SCOPED_TRACE(line);
        const Parsed parsed = parse(std::string(line) + "\r\n\r\n");
        ASSERT_EQ(parsed.state, State::complete);
        EXPECT_EQ(parsed.request.method, method);
        EXPECT_EQ(parsed.request.path, path);
    }
}

TEST(RequestParser, NeverCompletesWhatIsNoRequest) {
    const std::string cases[] = {
        "",
        "\r\n\r\n",
        "GET\r\n\r\n",
        "   \r\n\r\n",
        "GET /status HTTP/1.1\n\n",
        "GET /status HTTP/1.1\r\nHost: x\r\n",
        "GET /st\xff HTTP/1.1\r\n\r\n",
        "GET /status HTTP/1.1\r\nX: \xc3\x28\r\n\r\n",
        "GET /" + std::string(RequestParser::kLongestTarget, 'a') + "\r\n\r\n",
        headerBlock("Content-Length: 8\r\n") + "{\"x\":1}",
        headerBlock("Content-Length: 99999999999999999999999999\r\n") + "{}",
        headerBlock("Content-Length: 18446744073709551615\r\n") + "{}",
        headerBlock("Content-Length: 18446744073709551618\r\n") + "{}",
    };
    for (const std::string& text : cases) {
        EXPECT_EQ(parse(text).state, State::incomplete) << text.substr(0, 80);
    }
}

// A first line that is no request can never become one, so nothing more of it is kept.
TEST(RequestParser, KeepsNoBytesOfWhatIsHopeless) {
    RequestParser parser;
    EXPECT_EQ(parser.append("GET\r\n\r\n"), State::incomplete);
    EXPECT_EQ(parser.append(std::string(1 << 20, 'x')), State::incomplete);
    EXPECT_EQ(parser.heldBytes(), 0u);
    EXPECT_EQ(parser.append(std::string(7 << 20, 'x')), State::tooLarge);
}

TEST(RequestParser, TakesARequestOfEightMebibytes) {
    RequestParser whole;
    const std::string head = headerBlock("Content-Length: 8388000\r\n");
    EXPECT_EQ(whole.append(head), State::incomplete);
    EXPECT_EQ(whole.append(std::string(8'388'000, ' ')), State::complete);
}

TEST(RequestParser, IsIndifferentToCuts) {
    const std::string text =
        "POST /swipe?device=a%20b HTTP/1.1\r\nHost: localhost\r\nContent-Length: 35\r\n\r\n"
        "{\"x1\":0.5,\"text\":\"\\r\\n\\r\\n\",\"y\":[]}";
    std::mt19937 random(20261121);
    for (int round = 0; round < 2000; ++round) {
        RequestParser parser;
        std::string_view rest = text;
        while (!rest.empty()) {
            const std::size_t size = 1 + random() % (round % 2 == 0 ? 3 : rest.size());
            const std::string_view piece = rest.substr(0, size);
            rest.remove_prefix(piece.size());
            ASSERT_EQ(parser.append(piece), rest.empty() ? State::complete : State::incomplete);
        }
        const HTTPRequest request = parser.request();
        ASSERT_EQ(request.path, "/swipe");
        ASSERT_EQ(request.query.at("device"), "a b");
        ASSERT_EQ(request.body, Json({{"x1", 0.5}, {"text", "\r\n\r\n"}, {"y", Json::array()}}));
    }
}

// Searching the whole buffer again for each byte would take hours for this input.
TEST(RequestParser, TakesManyTinyPiecesInLinearTimeAndGivesUpBeyondEightMebibytes) {
    RequestParser parser;
    State state = State::incomplete;
    for (std::size_t sent = 0; sent < 8'388'608; ++sent) state = parser.append("\r");
    EXPECT_EQ(state, State::incomplete);
    EXPECT_EQ(parser.append("\r"), State::tooLarge);
}

TEST(RequestParser, KnowsWhenMoreIsComing) {
    const std::tuple<const char*, std::string, bool> rows[] = {
        {"a plain GET", "GET / HTTP/1.1\r\n\r\n", false},
        {"a GET with extra bytes", "GET / HTTP/1.1\r\n\r\nx", true},
        {"a POST with its body", headerBlock("Content-Length: 2\r\n") + "{}", false},
        {"a POST with extra bytes", headerBlock("Content-Length: 2\r\n") + "{}x", true},
        {"a POST without length", headerBlock("Transfer-Encoding: chunked\r\n"), true},
    };
    for (const auto& [name, text, more] : rows) {
        SCOPED_TRACE(name);
        RequestParser parser;
        ASSERT_EQ(parser.append(text), State::complete);
        EXPECT_EQ(parser.hasMoreToCome(), more);
    }
}

}  // namespace
}  // namespace tandrel
