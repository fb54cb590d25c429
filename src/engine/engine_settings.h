#pragma once

#include <cstdint>
#include <optional>
#include <string>

namespace tandrel {

// A port number as an environment variable gives it: a decimal number from 0 to 65535, a leading
// "+" allowed, "-" only before zeros; anything else is the default.
std::uint16_t parsePort(const std::optional<std::string>& text, std::uint16_t fallback);

// What the environment says about the engine.
struct EngineSettings {
    std::uint16_t port = 7390;
    std::uint16_t airplayPort = 7391;
    std::optional<std::string> engineURL;   // another place to reach the engine at
    std::optional<std::string> airplayURL;  // the same for the AirPlay capture
    bool disabled = false;

    // Reads TANDREL_ENGINE_PORT, TANDREL_AIRPLAY_PORT, TANDREL_ENGINE_URL, TANDREL_AIRPLAY_URL and
    // TANDREL_NO_ENGINE.
    static EngineSettings fromEnvironment();

    std::string baseURL() const;
    std::string baseAirplayURL() const;
};

}  // namespace tandrel
