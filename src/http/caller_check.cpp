#include "http/caller_check.h"

#include <array>

#include <fmt/format.h>

#include "http/head.h"

namespace tandrel {
namespace {

constexpr std::array<std::string_view, 3> kOwnHosts = {"localhost", "127.0.0.1", "[::1]"};

constexpr const char* kForeignHost =
    "Refused: the request was sent to another host name. Call this port as 127.0.0.1 or localhost.";
constexpr const char* kWebPage =
    "Refused: a web page may not use this port. Call it from a program on this computer.";
constexpr const char* kOptions =
    "Refused: no web page may use this port, so there is nothing to ask with OPTIONS. Call it from "
    "a program on this computer.";

// One of our hosts with or without a port.
bool isOwnHost(std::string_view text) {
    for (const std::string_view host : kOwnHosts) {
        if (!equalsIgnoringCase(text.substr(0, host.size()), host)) continue;
        const std::string_view rest = text.substr(host.size());
        if (rest.empty()) return true;
        return rest[0] == ':' && rest.size() <= 6 &&
               std::ranges::all_of(rest.substr(1), isAsciiDigit);
    }
    return false;
}

bool isOwnOrigin(std::string_view text) {
    constexpr std::string_view kScheme = "http://";
    return equalsIgnoringCase(text.substr(0, kScheme.size()), kScheme) &&
           isOwnHost(text.substr(kScheme.size()));
}

bool isOwnSite(std::string_view text) {
    return equalsIgnoringCase(text, "none") || equalsIgnoringCase(text, "same-origin");
}

struct Rule {
    std::string_view header;
    bool (*accepts)(std::string_view value);
    const char* refusal;
};

constexpr std::array kRules = {
    Rule{"host", isOwnHost, kForeignHost},
    Rule{"origin", isOwnOrigin, kWebPage},
    Rule{"sec-fetch-site", isOwnSite, kWebPage},
};

}  // namespace

std::optional<std::string> refusalOfPeer(PeerIdentity& peers,
                                         const LoopbackConnection& connection) {
    const Result<uid_t> user = peers.userBehind(connection);
    if (!user) {
        return fmt::format("Refused: can't tell which user is calling ({}). Try again.",
                           user.error().message);
    }
    if (*user == peers.ownUser()) return std::nullopt;
    return "Refused: another user of this computer is calling. Run the program as the user who "
           "runs Tandrel.";
}

std::optional<std::string> refusalOfRequest(std::string_view method, std::string_view head) {
    if (equalsIgnoringCase(method, "options")) return kOptions;
    const char* refusal = nullptr;
    forEachHeader(head, [&](std::string_view name, std::string_view value) {
        for (const Rule& rule : kRules) {
            if (equalsIgnoringCase(name, rule.header) && !rule.accepts(value)) {
                refusal = rule.refusal;
            }
        }
    });
    if (refusal == nullptr) return std::nullopt;
    return refusal;
}

}  // namespace tandrel
