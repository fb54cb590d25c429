#include "http/target.h"

#include "base/ascii.h"
#include "base/unicode.h"

namespace tandrel {
namespace {

std::string decodedOrAsSent(std::string_view text) {
    auto decoded = percentDecoded(text);
    return decoded ? std::move(*decoded) : std::string(text);
}

// The length of "scheme:" at the start of a URL reference, 0 when there is none.
std::size_t schemeLength(std::string_view text) {
    const std::size_t colon = text.find(':');
    if (colon == std::string_view::npos || colon == 0 || !isAsciiLetter(text[0])) return 0;
    for (const char c : text.substr(0, colon)) {
        if (!isAsciiLetter(c) && !isAsciiDigit(c) && c != '+' && c != '-' && c != '.') return 0;
    }
    return colon + 1;
}

void parseItem(std::string_view item, std::map<std::string, std::string>& query) {
    if (item.empty()) return;
    const std::size_t equals = item.find('=');
    const std::string_view value =
        equals == std::string_view::npos ? std::string_view() : item.substr(equals + 1);
    query.insert_or_assign(decodedOrAsSent(item.substr(0, equals)), decodedOrAsSent(value));
}

std::map<std::string, std::string> parseQuery(std::string_view text) {
    std::map<std::string, std::string> query;
    while (!text.empty()) {
        const std::size_t end = text.find('&');
        parseItem(text.substr(0, end), query);
        text.remove_prefix(end == std::string_view::npos ? text.size() : end + 1);
    }
    return query;
}

}  // namespace

std::optional<std::string> percentDecoded(std::string_view text) {
    std::string decoded;
    decoded.reserve(text.size());
    for (std::size_t i = 0; i < text.size(); ++i) {
        if (text[i] != '%') {
            decoded += text[i];
            continue;
        }
        if (text.size() - i < 3) return std::nullopt;
        const int high = hexDigitValue(text[i + 1]);
        const int low = hexDigitValue(text[i + 2]);
        if (high < 0 || low < 0) return std::nullopt;
        decoded += static_cast<char>(high * 16 + low);
        i += 2;
    }
    if (!isUtf8(decoded)) return std::nullopt;
    return decoded;
}

std::string percentEncoded(std::string_view text) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    std::string encoded;
    encoded.reserve(text.size());
    for (const char c : text) {
        const bool mark = c == '-' || c == '.' || c == '_' || c == '~';
        if (isAsciiLetter(c) || isAsciiDigit(c) || mark) {
            encoded += c;
            continue;
        }
        const auto byte = static_cast<unsigned char>(c);
        encoded += {'%', kDigits[byte / 16], kDigits[byte % 16]};
    }
    return encoded;
}

Target parseTarget(std::string_view text) {
    text = text.substr(0, text.find('#'));
    const std::size_t question = text.find('?');
    std::string_view path = text.substr(0, question);
    path.remove_prefix(schemeLength(path));
    if (path.starts_with("//")) {
        const std::size_t slash = path.find('/', 2);
        path = slash == std::string_view::npos ? std::string_view() : path.substr(slash);
    }
    Target target;
    target.path = decodedOrAsSent(path);
    if (question != std::string_view::npos) target.query = parseQuery(text.substr(question + 1));
    return target;
}

}  // namespace tandrel
