#include "http/loopback_url.h"

#include <charconv>
#include <optional>

#include <fmt/format.h>

#include "base/ascii.h"

namespace tandrel {
namespace {

bool isCleanPath(std::string_view text) {
    return std::ranges::all_of(text, [](char c) { return c > ' ' && c < '\x7f'; });
}

// The port after ":"; 80 when there is none.
std::optional<std::uint16_t> parsePort(std::string_view text) {
    if (text.empty()) return 80;
    std::uint16_t port = 0;
    const char* end = text.data() + text.size();
    const auto parsed = std::from_chars(text.data() + 1, end, port);
    const bool whole = text[0] == ':' && parsed.ec == std::errc() && parsed.ptr == end;
    if (!whole || port == 0) return std::nullopt;
    return port;
}

}  // namespace

Result<LoopbackUrl> LoopbackUrl::parse(std::string_view text) {
    constexpr std::string_view kScheme = "http://";
    if (!equalsIgnoringCase(text.substr(0, kScheme.size()), kScheme)) {
        return fail(fmt::format("\"{}\" is not a URL that begins with http://", text));
    }
    std::string_view rest = text.substr(kScheme.size());
    const std::size_t slash = std::min(rest.find_first_of("/?#"), rest.size());
    std::string_view prefix = rest.substr(slash);
    rest = rest.substr(0, slash);

    const bool isIpv6 = rest.starts_with('[');
    const std::size_t bracket = isIpv6 ? rest.find(']') : 0;
    const std::size_t colon = std::min(rest.find(':', std::min(bracket, rest.size())), rest.size());
    const std::string host = asciiLowered(rest.substr(0, colon));
    if (host != "localhost" && host != "127.0.0.1" && host != "[::1]") {
        return fail(fmt::format("\"{}\" does not name this computer: use 127.0.0.1", text));
    }
    const auto port = parsePort(rest.substr(colon));
    if (!port) return fail(fmt::format("\"{}\" has no port from 1 to 65535", text));
    while (prefix.ends_with('/')) prefix.remove_suffix(1);
    if (!isCleanPath(prefix) || prefix.find_first_of("?#") != std::string_view::npos) {
        return fail(fmt::format("\"{}\" may have a path, but no query, fragment or space", text));
    }
    return LoopbackUrl{isIpv6 ? Family::ipv6 : Family::ipv4, *port, host, std::string(prefix)};
}

LoopbackUrl LoopbackUrl::ofPort(std::uint16_t port) {
    return {Family::ipv4, port, "127.0.0.1", ""};
}

std::string LoopbackUrl::text() const { return fmt::format("http://{}:{}{}", host, port, prefix); }

}  // namespace tandrel
