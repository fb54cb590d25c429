// The JSON body of a request, and that what was read can be written and read again.
#include <cstdint>
#include <cstdlib>

#include <fmt/format.h>

#include "http/request_parser.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    tandrel::RequestParser parser;
    parser.append(fmt::format("POST /tap HTTP/1.1\r\nContent-Length: {}\r\n\r\n", size));
    parser.append(text);
    const tandrel::Json body = parser.request().body;
    if (!body.is_object()) std::abort();
    const auto again = tandrel::parseJson(tandrel::dumpJson(body));
    if (!again || *again != body) std::abort();
    return 0;
}
