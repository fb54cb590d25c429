#include "app/ai_apps.h"

namespace tandrel {
namespace {

// Under which key the settings keep that the app has had our entry.
const char* addedKey(AIApp app) {
    switch (app) {
        case AIApp::claudeCode:
            return "claudeCodeAdded";
        case AIApp::claudeDesktop:
            return "claudeDesktopAdded";
        case AIApp::codex:
            return "codexAdded";
    }
    return "";
}

bool hadEntry(AIApp app, const UserDefaults& defaults) {
    return defaults.boolValue(addedKey(app)).value_or(false);
}

}  // namespace

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

Result<void> rememberEntries(const std::vector<AIAppStatus>& apps, UserDefaults& defaults) {
    for (const AIAppStatus& app : apps) {
        if (app.link != Link::addedHere || hadEntry(app.app, defaults)) continue;
        TRY_VOID(defaults.set(addedKey(app.app), true));
    }
    return {};
}

void markLost(std::vector<AIAppStatus>& apps, const UserDefaults& defaults) {
    for (AIAppStatus& app : apps) {
        app.lost = app.installed && app.link == Link::notAdded && hadEntry(app.app, defaults);
    }
}

Result<void> forgetEntry(AIApp app, UserDefaults& defaults) {
    return defaults.set(addedKey(app), false);
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
