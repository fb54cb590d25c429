#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "base/clock.h"
#include "platform/running_applications.h"

namespace tandrel {

// The name of whoever answers GET /status on this loopback port; nothing when nobody does within
// 1.2 s. Blocks.
std::optional<std::string> whoAnswers(std::uint16_t port);

// How a /status reply names its sender.
std::string answererName(int status, const std::string& body);

// Ends the other programs that may serve the engine's port and returns their names.
std::vector<std::string> quitOtherEngines(RunningApplications& applications);

}  // namespace tandrel
