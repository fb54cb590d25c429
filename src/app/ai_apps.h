#pragma once

#include <filesystem>
#include <optional>
#include <vector>

#include "aiconnect/ai_connect.h"
#include "app/app_snapshot.h"
#include "platform/user_defaults.h"

namespace tandrel {

// How each AI app on this computer stands to this copy, always in the order of AIApp. `claude` is
// where Claude Code was found, since looking for it may take long. Reads files.
std::vector<AIAppStatus> lookAtAIApps(const AIConnect& ai,
                                      const std::optional<std::filesystem::path>& claude);

// Keeps which apps have our entry, so that one that loses it, even while Tandrel does not run, is
// noticed. The error says why it is not kept.
Result<void> rememberEntries(const std::vector<AIAppStatus>& apps, UserDefaults& defaults);
// Marks the apps that had our entry and have none any more. One that was uninstalled lost nothing.
void markLost(std::vector<AIAppStatus>& apps, const UserDefaults& defaults);
// The owner took the entry out on purpose: it is not missed until the app has it again.
Result<void> forgetEntry(AIApp app, UserDefaults& defaults);

// Adds Tandrel to the app's settings. Blocks; what came of it is shown as it stands.
AIConnect::Outcome addToAIApp(const AIConnect& ai, AIApp app);

}  // namespace tandrel
