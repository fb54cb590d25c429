#include <sstream>

#include <fmt/format.h>

#include "aiconnect/ai_connect.h"
#include "aiconnect/claude_settings.h"
#include "aiconnect/programs.h"
#include "base/file.h"
#include "base/unicode.h"

namespace tandrel {
namespace {

constexpr Duration kAskShellTimeout = std::chrono::seconds(30);
constexpr Duration kAddTimeout = std::chrono::seconds(60);

// Claude Code keeps its sessions' history beside its settings.
constexpr std::size_t kLargestCodeSettings = 16 * 1024 * 1024;

// The statuses that a shell and timeout(1) give for what has none of its own.
constexpr int kStatusNotStarted = 127;
constexpr int kStatusTimedOut = 124;
constexpr int kStatusSignalled = 128;

int shellStatus(const ProgramEnd& end) {
    if (end.how == ProgramEnd::How::timedOut) return kStatusTimedOut;
    return end.how == ProgramEnd::How::signalled ? kStatusSignalled + end.status : end.status;
}

std::string words(const ProgramEnd& end) {
    const std::string output = trimmed(end.output);
    return output.empty() ? "" : ": " + output;
}

}  // namespace

std::string shellQuote(const std::string& text) {
    constexpr std::string_view kPlain =
        "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789_./-";
    if (!text.empty() && text.find_first_not_of(kPlain) == std::string::npos) return text;
    std::string quoted = "'";
    for (const char c : text) {
        if (c == '\'') {
            quoted += R"('\'')";
        } else {
            quoted += c;
        }
    }
    return quoted + "'";
}

std::optional<std::filesystem::path> AIConnect::findClaude() const {
    const auto& home = places_.home;
    std::vector<std::filesystem::path> places{home / ".claude/local/claude",
                                              home / ".local/bin/claude"};
    for (const auto& folder : places_.system) places.push_back(folder / "claude");
    places.push_back(home / ".npm-global/bin/claude");
    places.push_back(home / ".bun/bin/claude");
    if (auto found = firstExecutable(places)) return found;

    const auto end = to_.processes.run({.program = places_.loginShell,
                                        .arguments = {"-lc", "command -v claude"},
                                        .timeout = kAskShellTimeout,
                                        .stop = to_.stop});
    if (!end || end->how != ProgramEnd::How::exited || end->status != 0) return std::nullopt;
    // A profile may greet before the answer, and an alias is no path.
    std::istringstream lines(end->output);
    std::optional<std::filesystem::path> answer;
    for (std::string line; std::getline(lines, line);) {
        line = trimmed(line);
        if (line.starts_with('/') && isExecutableFile(line)) answer = line;
    }
    return answer;
}

std::string AIConnect::claudeCodeCommand() const {
    return "claude mcp add -s user tandrel -- " + shellQuote(helper_) + " mcp";
}

Link AIConnect::claudeCodeLink() const {
    const auto text = readSettings(codeSettings(), kLargestCodeSettings);
    return text && *text ? claudeLink(**text, helper_) : Link::notAdded;
}

// A `claude` installed with a version manager is a script for the `node` beside it, which the
// search path of a desktop session need not name.
ProgramEnd AIConnect::runClaude(const std::filesystem::path& claude,
                                const std::vector<std::string>& arguments) const {
    const std::string path = claude.parent_path().string() + ":" + places_.searchPath;
    auto end = to_.processes.run({.program = claude,
                                  .arguments = arguments,
                                  .timeout = kAddTimeout,
                                  .environment = {{"PATH", path}},
                                  .stop = to_.stop});
    if (!end) return {.status = kStatusNotStarted, .output = end.error().message};
    if (end->how == ProgramEnd::How::timedOut && trimmed(end->output).empty()) {
        end->output = fmt::format("no answer in {} s",
                                  std::chrono::floor<std::chrono::seconds>(kAddTimeout).count());
    }
    return *std::move(end);
}

AIConnect::Outcome AIConnect::addToClaudeCode(const std::filesystem::path& claude) const {
    Outcome added{true,
                  "Added. Start a new Claude Code session and ask it to look at your iPhone."};
    // `claude mcp add` refuses a name that is taken.
    const Link before = claudeCodeLink();
    if (before == Link::addedHere) return added;
    if (before == Link::addedElsewhere)
        runClaude(claude, {"mcp", "remove", "-s", "user", "tandrel"});
    const ProgramEnd end =
        runClaude(claude, {"mcp", "add", "-s", "user", "tandrel", "--", helper_, "mcp"});
    if (end.how == ProgramEnd::How::exited && end.status == 0) return added;
    return {false, fmt::format("claude exited with {}{}", shellStatus(end), words(end))};
}

}  // namespace tandrel
