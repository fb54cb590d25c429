#include "http/reply_parser.h"

#include <utility>

#include "http/head.h"

namespace tandrel {
namespace {

// The code of a status line such as "HTTP/1.1 200 OK"; 0 when it is none.
int parseStatus(std::string_view line) {
    constexpr std::string_view kVersion = "HTTP/1.";
    if (!line.starts_with(kVersion) || line.size() < kVersion.size() + 5) return 0;
    line.remove_prefix(kVersion.size() + 1);
    if (line[0] != ' ' || (line.size() > 4 && line[4] != ' ')) return 0;
    int status = 0;
    for (const char c : line.substr(1, 3)) {
        if (!isAsciiDigit(c)) return 0;
        status = status * 10 + (c - '0');
    }
    return status;
}

}  // namespace

ReplyParser::State ReplyParser::append(std::string_view chunk) {
    if (headRead_) {
        response_.body.insert(response_.body.end(), chunk.begin(), chunk.end());
        return state();
    }
    head_.append(chunk);
    if (head_.size() > mostBytes_) return State::tooLarge;
    const std::size_t end = head_.find(kBlankLine, searched_);
    if (end == std::string::npos) {
        searched_ = head_.size() - std::min(head_.size(), kBlankLine.size() - 1);
        return State::incomplete;
    }
    if (!readHead(std::string_view(head_).substr(0, end))) return State::malformed;
    headRead_ = true;
    if (length_) {
        response_.body.reserve(
            static_cast<std::size_t>(std::min<std::uint64_t>(*length_, mostBytes_)));
    }
    response_.body.assign(head_.begin() + static_cast<std::ptrdiff_t>(end + kBlankLine.size()),
                          head_.end());
    std::string().swap(head_);
    return state();
}

bool ReplyParser::readHead(std::string_view head) {
    response_.status = parseStatus(firstLine(head));
    forEachHeader(head, [this](std::string_view name, std::string_view value) {
        response_.headers[asciiLowered(name)] = value;
    });
    const auto& headers = response_.headers;
    if (const auto type = headers.find("content-type"); type != headers.end()) {
        response_.contentType = type->second;
    }
    if (const auto length = headers.find("content-length"); length != headers.end()) {
        length_ = parseContentLength(length->second);
    }
    return response_.status != 0;
}

ReplyParser::State ReplyParser::state() const {
    const std::size_t received = response_.body.size();
    if (received > mostBytes_ || (length_ && *length_ > mostBytes_)) return State::tooLarge;
    return length_ && received >= *length_ ? State::complete : State::incomplete;
}

ReplyParser::State ReplyParser::finish() const {
    const bool whole = headRead_ && !length_;
    return whole ? State::complete : State::malformed;
}

ClientResponse ReplyParser::take() {
    if (length_) response_.body.resize(static_cast<std::size_t>(*length_));
    return std::move(response_);
}

}  // namespace tandrel
