// Request targets, and that encoding a text and decoding it again gives the text.
#include <cstdint>
#include <cstdlib>

#include "base/unicode.h"
#include "http/target.h"

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string_view text(reinterpret_cast<const char*>(data), size);
    const tandrel::Target target = tandrel::parseTarget(text);
    if (target.path.size() > size) std::abort();

    const std::string encoded = tandrel::percentEncoded(text);
    const auto decoded = tandrel::percentDecoded(encoded);
    if (decoded.has_value() != tandrel::isUtf8(text)) std::abort();
    if (decoded && *decoded != text) std::abort();
    if (decoded && size > 0 && tandrel::parseTarget("/?q=" + encoded).query.at("q") != text) {
        std::abort();
    }
    return 0;
}
