#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "http/message.h"

namespace tandrel {

// Collects one request from the bytes of a connection, however they are cut. Each byte is looked at
// a bounded number of times. One thread at a time.
class RequestParser {
 public:
    // A request that is not complete by then is given up.
    static constexpr std::size_t kMostBytes = 8'388'608;
    // Bounds what the items of a query may cost in memory; a longer target is malformed.
    static constexpr std::size_t kLongestTarget = 1'048'576;

    enum class State {
        incomplete,  // also what can never become a request: a first line of one word, no UTF-8
        complete,
        tooLarge,
    };

    State append(std::string_view chunk);

    // Bytes held in memory. What can never become a request is not kept.
    std::size_t heldBytes() const { return buffer_.size(); }

    // The rest holds once the request is complete; views live as long as the parser is not changed.

    // Request line and headers, without the blank line.
    std::string_view head() const;
    std::string_view method() const { return words().method; }
    // Whether the client sent, or is likely to send, more than the request that was read.
    bool hasMoreToCome() const;
    // The request with its target decoded and its body read as JSON.
    HTTPRequest request() const;

 private:
    struct Words {
        std::string_view method;
        std::string_view target;
    };
    Words words() const;
    std::string_view body() const;
    bool findHead();
    bool readHead();
    void giveUp();

    std::string buffer_;
    std::size_t received_ = 0;
    std::size_t searched_ = 0;  // no blank line begins before this
    std::size_t headLength_ = std::string::npos;
    std::uint64_t contentLength_ = 0;
    bool lengthGiven_ = false;
    bool hopeless_ = false;
};

}  // namespace tandrel
