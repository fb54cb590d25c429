#include "http/reply_writer.h"

#include <algorithm>
#include <utility>

#include <fmt/format.h>

namespace tandrel {
namespace {

std::string_view reasonPhrase(int status) {
    switch (status) {
        case 200:
            return "OK";
        case 400:
            return "Bad Request";
        case 404:
            return "Not Found";
        case 503:
            return "Service Unavailable";
        default:
            return "Error";
    }
}

// A device's name may stand in a header; a control character in it must not begin a new line.
std::string oneLine(std::string_view text) {
    std::string line(text);
    std::ranges::replace_if(
        line, [](char c) { return (c >= 0 && c < ' ' && c != '\t') || c == '\x7f'; }, ' ');
    return line;
}

}  // namespace

Reply httpReplyWriter(HTTPResponse response) {
    std::string head = fmt::format(
        "HTTP/1.1 {} {}\r\nContent-Type: {}\r\nContent-Length: {}\r\nConnection: close\r\n",
        response.status, reasonPhrase(response.status), oneLine(response.contentType),
        response.body.size());
    for (const auto& [name, value] : response.headers) {
        head += oneLine(name) + ": " + oneLine(value) + "\r\n";
    }
    head += "\r\n";
    return {std::move(head), std::move(response.body)};
}

Reply airplayReplyWriter(HTTPResponse response) {
    const bool isImage = response.contentType.starts_with("image/");
    std::string head = fmt::format(
        "HTTP/1.1 {} {}\r\nContent-Type: {}\r\nContent-Length: {}\r\n{}Connection: close\r\n\r\n",
        response.status, response.status == 200 ? "OK" : "Error", oneLine(response.contentType),
        response.body.size(), isImage ? "Cache-Control: no-store\r\n" : "");
    return {std::move(head), std::move(response.body)};
}

}  // namespace tandrel
