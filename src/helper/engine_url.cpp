#include "helper/engine_url.h"

#include <charconv>
#include <optional>

#include <fmt/format.h>

#include "base/environment.h"
#include "base/file.h"
#include "base/json.h"
#include "base/paths.h"

namespace tandrel {
namespace {

constexpr std::uint16_t kUsualPort = 7390;
constexpr std::size_t kLargestStateFile = 64 * 1024;

std::optional<std::uint16_t> portFrom(std::string_view text) {
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    if (error != std::errc{} || end != text.data() + text.size() || port == 0) return std::nullopt;
    return port;
}

std::optional<std::uint16_t> portOfRunningEngine() {
    const auto text = readFile(stateHome() / "tandrel/engine.json", kLargestStateFile);
    if (!text) return std::nullopt;
    const auto state = parseJson(*text);
    if (!state) return std::nullopt;
    const auto port = numberMember(*state, "port");
    if (!port || !(*port >= 1 && *port <= 65535)) return std::nullopt;
    return static_cast<std::uint16_t>(*port);
}

}  // namespace

Result<LoopbackUrl> engineUrl() {
    if (const auto url = environment("TANDREL_ENGINE_URL"); url && !url->empty()) {
        auto parsed = LoopbackUrl::parse(*url);
        if (!parsed) {
            return fail(fmt::format("TANDREL_ENGINE_URL: {}.", parsed.error().message));
        }
        return parsed;
    }
    if (const auto text = environment("TANDREL_ENGINE_PORT"); text && !text->empty()) {
        const auto port = portFrom(*text);
        if (!port)
            return fail(
                fmt::format("TANDREL_ENGINE_PORT is \"{}\", not a port from 1 to 65535.", *text));
        return LoopbackUrl::ofPort(*port);
    }
    return LoopbackUrl::ofPort(portOfRunningEngine().value_or(kUsualPort));
}

}  // namespace tandrel
