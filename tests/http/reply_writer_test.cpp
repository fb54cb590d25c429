#include "http/reply_writer.h"

#include <gtest/gtest.h>

namespace tandrel {
namespace {

HTTPResponse response(int status, std::string type, std::string_view body) {
    HTTPResponse made;
    made.status = status;
    made.contentType = std::move(type);
    made.body = toBytes(body);
    return made;
}

std::string text(const Reply& reply) { return reply.head + toText(reply.body); }

TEST(ReplyWriter, WritesTheEnginesReplies) {
    const std::pair<int, const char*> rows[] = {
        {200, "HTTP/1.1 200 OK"},        {400, "HTTP/1.1 400 Bad Request"},
        {404, "HTTP/1.1 404 Not Found"}, {503, "HTTP/1.1 503 Service Unavailable"},
        {403, "HTTP/1.1 403 Error"},     {409, "HTTP/1.1 409 Error"},
        {423, "HTTP/1.1 423 Error"},     {500, "HTTP/1.1 500 Error"},
    };
    for (const auto& [status, line] : rows) {
        EXPECT_EQ(text(httpReplyWriter(response(status, "application/json", "{}"))),
                  std::string(line) +
                      "\r\nContent-Type: application/json\r\nContent-Length: 2\r\n"
                      "Connection: close\r\n\r\n{}");
    }
}

TEST(ReplyWriter, WritesExtraHeadersBeforeTheBlankLine) {
    HTTPResponse picture = response(200, "image/png", "PNG");
    picture.headers = {{"X-Device", "phone"}, {"X-Image-Width", "277"}};
    EXPECT_EQ(text(httpReplyWriter(picture)),
              "HTTP/1.1 200 OK\r\nContent-Type: image/png\r\nContent-Length: 3\r\n"
              "Connection: close\r\nX-Device: phone\r\nX-Image-Width: 277\r\n\r\nPNG");
}

// A device names itself; its name must not add lines to a reply.
TEST(ReplyWriter, LetsNoValueBeginALine) {
    HTTPResponse odd = response(200, "a/b\r\nX: 1", "");
    odd.headers = {{"X-Device", "a\r\n\r\nb\x01\u00e9"}};
    EXPECT_EQ(text(httpReplyWriter(odd)),
              "HTTP/1.1 200 OK\r\nContent-Type: a/b  X: 1\r\nContent-Length: 0\r\n"
              "Connection: close\r\nX-Device: a    b \u00e9\r\n\r\n");
}

TEST(ReplyWriter, WritesTheAirPlayReplies) {
    EXPECT_EQ(text(airplayReplyWriter(response(503, "application/json", "{}"))),
              "HTTP/1.1 503 Error\r\nContent-Type: application/json\r\nContent-Length: 2\r\n"
              "Connection: close\r\n\r\n{}");
    HTTPResponse picture = response(200, "image/jpeg", "JPEG");
    picture.headers = {{"X-Device", "phone"}};
    EXPECT_EQ(text(airplayReplyWriter(picture)),
              "HTTP/1.1 200 OK\r\nContent-Type: image/jpeg\r\nContent-Length: 4\r\n"
              "Cache-Control: no-store\r\nConnection: close\r\n\r\nJPEG");
}

TEST(ReplyWriter, DoesNotCopyTheBody) {
    HTTPResponse frame = response(200, "image/png", std::string(1000, 'x'));
    const void* bytes = frame.body.data();
    EXPECT_EQ(httpReplyWriter(std::move(frame)).body.data(), bytes);
}

}  // namespace
}  // namespace tandrel
