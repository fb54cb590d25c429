#include "engine/engine_settings.h"

#include <algorithm>
#include <charconv>

#include <fmt/format.h>

#include "base/environment.h"

namespace tandrel {

std::uint16_t parsePort(const std::optional<std::string>& text, std::uint16_t fallback) {
    if (!text || text->empty()) return fallback;
    std::string_view digits = *text;
    const bool negative = digits.front() == '-';
    if (negative || digits.front() == '+') digits.remove_prefix(1);
    if (negative) {
        const bool zeros =
            !digits.empty() && std::ranges::all_of(digits, [](char c) { return c == '0'; });
        return zeros ? std::uint16_t{0} : fallback;
    }
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(digits.data(), digits.data() + digits.size(), port);
    const bool whole = end == digits.data() + digits.size();
    return error == std::errc{} && whole ? port : fallback;
}

EngineSettings EngineSettings::fromEnvironment() {
    EngineSettings settings;
    settings.port = parsePort(environment("TANDREL_ENGINE_PORT"), settings.port);
    settings.airplayPort = parsePort(environment("TANDREL_AIRPLAY_PORT"), settings.airplayPort);
    settings.engineURL = environment("TANDREL_ENGINE_URL");
    settings.airplayURL = environment("TANDREL_AIRPLAY_URL");
    settings.disabled = environment("TANDREL_NO_ENGINE") == "1";
    return settings;
}

std::string EngineSettings::baseURL() const {
    return engineURL.value_or(fmt::format("http://127.0.0.1:{}", port));
}

std::string EngineSettings::baseAirplayURL() const {
    return airplayURL.value_or(fmt::format("http://127.0.0.1:{}", airplayPort));
}

}  // namespace tandrel
