// A server's reply as the loopback client reads it, whole and in pieces of the first byte's size.
#include <cstdint>
#include <cstdlib>

#include "http/reply_parser.h"

using State = tandrel::ReplyParser::State;

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::size_t piece = 1 + data[0];
    std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);
    tandrel::ReplyParser parser(4096);
    State state = State::incomplete;
    while (state == State::incomplete && !text.empty()) {
        state = parser.append(text.substr(0, piece));
        text.remove_prefix(std::min(piece, text.size()));
    }
    if (state == State::incomplete) state = parser.finish();
    if (state == State::complete && parser.take().body.size() > 4096) std::abort();
    return 0;
}
