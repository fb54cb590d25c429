#include "app/ai_apps.h"

namespace tandrel {

std::vector<AIAppStatus> lookAtAIApps(const AIConnect& ai,
                                      const std::optional<std::filesystem::path>& claude) {
    return {{.app = AIApp::claudeCode,
             .installed = claude.has_value(),
             .link = ai.claudeCodeLink(),
             .toPaste = ai.claudeCodeCommand()},
            {.app = AIApp::claudeDesktop,
             .installed = ai.claudeDesktopInstalled(),
             .running = ai.claudeDesktopRunning(),
             .link = ai.claudeDesktopLink(),
             .toPaste = ai.desktopSnippet()},
            {.app = AIApp::codex,
             .installed = ai.codexInstalled(),
             .link = ai.codexLink(),
             .toPaste = ai.codexSnippet()}};
}

}  // namespace tandrel
