#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "aiconnect/ai_connect.h"
#include "app/app_snapshot.h"

namespace tandrel {

// How each AI app on this computer stands to this copy, always in the order of AIApp. `claude` is
// where Claude Code was found, since looking for it may take long. Reads files.
std::vector<AIAppStatus> lookAtAIApps(const AIConnect& ai,
                                      const std::optional<std::filesystem::path>& claude);

// Adds Tandrel to the app's settings. Blocks; what came of it is shown as it stands.
AIConnect::Outcome addToAIApp(const AIConnect& ai, AIApp app);

}  // namespace tandrel
