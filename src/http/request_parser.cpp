#include "http/request_parser.h"

#include "base/unicode.h"
#include "http/head.h"
#include "http/target.h"

namespace tandrel {
namespace {

// Takes the next word off the front of `line`; empty at its end.
std::string_view takeWord(std::string_view& line) {
    line.remove_prefix(std::min(line.find_first_not_of(' '), line.size()));
    const std::string_view word = line.substr(0, line.find(' '));
    line.remove_prefix(word.size());
    return word;
}

}  // namespace

RequestParser::State RequestParser::append(std::string_view chunk) {
    received_ += chunk.size();
    if (!hopeless_) {
        buffer_.append(chunk);
        if (headLength_ == std::string::npos && findHead() && !readHead()) giveUp();
    }
    const bool headKnown = !hopeless_ && headLength_ != std::string::npos;
    if (headKnown && buffer_.size() - headLength_ - kBlankLine.size() >= contentLength_) {
        return State::complete;
    }
    return received_ > kMostBytes ? State::tooLarge : State::incomplete;
}

bool RequestParser::findHead() {
    headLength_ = buffer_.find(kBlankLine, searched_);
    const std::size_t overlap = kBlankLine.size() - 1;
    searched_ = buffer_.size() > overlap ? buffer_.size() - overlap : 0;
    return headLength_ != std::string::npos;
}

// Says whether the head can belong to a request.
bool RequestParser::readHead() {
    if (!isUtf8(head())) return false;
    const std::string_view target = words().target;
    if (target.empty() || target.size() > kLongestTarget) return false;
    forEachHeader(head(), [this](std::string_view name, std::string_view value) {
        if (!equalsIgnoringCase(name, "content-length")) return;
        contentLength_ = parseContentLength(value);
        lengthGiven_ = true;
    });
    return true;
}

void RequestParser::giveUp() {
    hopeless_ = true;
    std::string().swap(buffer_);
}

std::string_view RequestParser::head() const {
    return std::string_view(buffer_).substr(0, headLength_);
}

RequestParser::Words RequestParser::words() const {
    std::string_view line = firstLine(head());
    const std::string_view method = takeWord(line);
    return {method, takeWord(line)};
}

std::string_view RequestParser::body() const {
    return std::string_view(buffer_).substr(headLength_ + kBlankLine.size(), contentLength_);
}

bool RequestParser::hasMoreToCome() const {
    if (buffer_.size() - headLength_ - kBlankLine.size() > contentLength_) return true;
    // A body without a length, such as a chunked one, may be on its way.
    return !lengthGiven_ && method() != "GET" && method() != "HEAD";
}

HTTPRequest RequestParser::request() const {
    const Words line = words();
    Target target = parseTarget(line.target);
    HTTPRequest request;
    request.method = line.method;
    request.path = std::move(target.path);
    request.query = std::move(target.query);
    if (contentLength_ > 0) {
        if (auto body = parseJson(this->body()); body && body->is_object()) {
            request.body = *std::move(body);
        }
    }
    return request;
}

}  // namespace tandrel
