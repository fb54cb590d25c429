#pragma once

#include <filesystem>
#include <optional>
#include <stop_token>
#include <string>
#include <utility>
#include <vector>

#include "aiconnect/link.h"
#include "aiconnect/settings_file.h"
#include "base/clock.h"
#include "platform/installed_applications.h"
#include "platform/processes.h"
#include "platform/running_applications.h"

namespace tandrel {

// Where the AI apps keep what this room looks for.
struct AIConnectPlaces {
    std::filesystem::path home;
    std::filesystem::path codexHome;            // holds config.toml
    std::filesystem::path claudeConfig;         // holds Claude Code's .claude.json
    std::filesystem::path configHome;           // holds Claude/claude_desktop_config.json
    std::string loginShell;                     // asked where `claude` is
    std::vector<std::filesystem::path> system;  // folders of programs for every user
    std::string searchPath;                     // as in PATH

    // Everything in its usual place below this home folder.
    static AIConnectPlaces below(const std::filesystem::path& home);
    // Of this user, as the environment says: HOME, CODEX_HOME, CLAUDE_CONFIG_DIR, XDG_CONFIG_HOME,
    // SHELL, PATH.
    static AIConnectPlaces fromEnvironment();
};

// Adds Tandrel's helper to the AI apps on this computer and tells how their settings stand to it.
// Collaborators outlive it. Any thread, but not the main one: files are synced, programs waited
// for.
class AIConnect {
 public:
    using Link = tandrel::Link;
    struct Services {
        Processes& processes;
        InstalledApplications& installed;
        RunningApplications& running;
        Clock& clock;
        std::stop_token stop = {};  // ends the programs that are waited for
    };
    // What came of it, and the sentence that the setup shows as it stands.
    struct Outcome {
        bool ok = false;
        std::string message;
        bool operator==(const Outcome&) const = default;
    };

    // `helper` is the program that the AI apps are to start.
    AIConnect(const std::filesystem::path& helper, AIConnectPlaces places, Services services);

    // Codex: its own table in config.toml.
    bool codexInstalled() const;
    Link codexLink() const;
    std::string codexSnippet() const;
    Outcome addToCodex() const;

    // Claude Code: told by its own command.
    std::optional<std::filesystem::path> findClaude() const;
    std::string claudeCodeCommand() const;
    Link claudeCodeLink() const;
    Outcome addToClaudeCode(const std::filesystem::path& claude) const;

    // Claude Desktop: an entry in its JSON settings, which it reads when it starts.
    bool claudeDesktopInstalled() const;
    bool claudeDesktopRunning() const;
    Link claudeDesktopLink() const;
    std::string desktopSnippet() const;
    Outcome addToClaudeDesktop() const;
    // Ends Claude Desktop if it runs and starts it again; whether it was started again.
    bool restartClaudeDesktop() const;

 private:
    std::filesystem::path codexSettings() const { return places_.codexHome / "config.toml"; }
    std::filesystem::path desktopSettings() const {
        return places_.configHome / "Claude/claude_desktop_config.json";
    }
    std::filesystem::path codeSettings() const { return places_.claudeConfig / ".claude.json"; }
    std::vector<RunningApplication> runningDesktops() const;
    ProgramEnd runClaude(const std::filesystem::path& claude,
                         const std::vector<std::string>& arguments) const;

    const std::string helper_;
    const AIConnectPlaces places_;
    const Services to_;
};

// The text as one word of a POSIX shell; as it is where that needs no quotes.
std::string shellQuote(const std::string& text);

}  // namespace tandrel
