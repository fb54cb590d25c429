// A whole request in the cuts that the input asks for: the first byte is the size of every piece.
#include <cstdlib>

#include "http/caller_check.h"
#include "http/request_parser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    if (size == 0) return 0;
    const std::size_t piece = 1 + data[0];
    const std::string_view text(reinterpret_cast<const char*>(data) + 1, size - 1);

    tandrel::RequestParser whole;
    tandrel::RequestParser cut;
    const auto atOnce = whole.append(text);
    auto inPieces = tandrel::RequestParser::State::incomplete;
    for (std::size_t at = 0; at < text.size(); at += piece) {
        inPieces = cut.append(text.substr(at, piece));
    }
    if (atOnce != inPieces) std::abort();
    if (atOnce != tandrel::RequestParser::State::complete) return 0;

    const tandrel::HTTPRequest request = whole.request();
    if (!request.body.is_object() || request.method.empty()) std::abort();
    if (request.path != cut.request().path || whole.head() != cut.head()) std::abort();
    (void)tandrel::refusalOfRequest(whole.method(), whole.head());
    return 0;
}
