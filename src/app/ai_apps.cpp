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

AIConnect::Outcome addToAIApp(const AIConnect& ai, AIApp app) {
    switch (app) {
        case AIApp::claudeCode:
            if (const auto claude = ai.findClaude()) return ai.addToClaudeCode(*claude);
            return {false, "Claude Code isn't on this computer."};
        case AIApp::claudeDesktop:
            return ai.addToClaudeDesktop();
        case AIApp::codex:
            return ai.addToCodex();
    }
    return {};
}

}  // namespace tandrel
