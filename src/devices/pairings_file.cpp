#include "devices/pairings_file.h"

#include <fmt/format.h>

#include "base/file.h"
#include "base/json.h"
#include "base/log.h"

namespace tandrel {
namespace {
constexpr std::size_t kLargestFile = 1024 * 1024;
}

Pairings loadPairings(const std::filesystem::path& file) {
    std::error_code error;
    if (!std::filesystem::exists(file, error)) return {};
    const auto text = readFile(file, kLargestFile);
    if (!text) {
        log(fmt::format("pairings not loaded: {}", text.error().message));
        return {};
    }
    const auto json = parseJson(*text);
    if (!json || !json->is_object()) {
        log(fmt::format("pairings not loaded: {} is not a JSON object", file.string()));
        return {};
    }
    Pairings pairings;
    for (const auto& [screen, value] : json->items()) {
        const auto host = value.is_string() ? Uuid::parse(value.get<std::string>()) : std::nullopt;
        if (host) pairings.emplace(screen, *host);
    }
    return pairings;
}

Result<void> storePairings(const std::filesystem::path& file, const Pairings& pairings) {
    Json json = Json::object();
    for (const auto& [screen, host] : pairings) json[screen] = host.text();
    return replaceFile(file, dumpJson(json) + "\n");
}

}  // namespace tandrel
