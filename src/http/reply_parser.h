#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "http/client.h"

namespace tandrel {

// Collects a server's reply from the bytes of a connection, however they are cut. One thread at a
// time.
class ReplyParser {
 public:
    explicit ReplyParser(std::size_t mostBytes) : mostBytes_(mostBytes) {}

    enum class State {
        incomplete,
        complete,
        malformed,
        tooLarge,
    };
    State append(std::string_view chunk);
    // The server has closed: complete if no length was given.
    State finish() const;

    // Once complete.
    ClientResponse take();

 private:
    bool readHead(std::string_view head);
    State state() const;

    const std::size_t mostBytes_;
    std::string head_;  // until it is complete
    std::size_t searched_ = 0;
    bool headRead_ = false;
    std::optional<std::uint64_t> length_;
    ClientResponse response_;
};

}  // namespace tandrel
