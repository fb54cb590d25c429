#include <algorithm>

#include "aiconnect/ai_connect.h"
#include "aiconnect/claude_settings.h"

namespace tandrel {
namespace {

constexpr std::string_view kDesktop = "com.anthropic.claudefordesktop";

constexpr Duration kLongestQuit = std::chrono::seconds(5);
constexpr Duration kLookAgain = std::chrono::milliseconds(100);

}  // namespace

std::vector<RunningApplication> AIConnect::runningDesktops() const {
    auto applications = to_.running.others();
    std::erase_if(applications, [](const RunningApplication& application) {
        return application.bundleIdentifier != kDesktop;
    });
    return applications;
}

bool AIConnect::claudeDesktopInstalled() const { return to_.installed.find(kDesktop).has_value(); }

bool AIConnect::claudeDesktopRunning() const { return !runningDesktops().empty(); }

Link AIConnect::claudeDesktopLink() const {
    const auto text = readSettings(desktopSettings());
    return text && *text ? claudeLink(**text, helper_) : Link::notAdded;
}

std::string AIConnect::desktopSnippet() const { return claudeSnippet(helper_); }

AIConnect::Outcome AIConnect::addToClaudeDesktop() const {
    const auto edited = editSettings(
        {.file = desktopSettings(),
         .merge = [&](const std::optional<std::string>& text) -> Result<std::string> {
             auto merged = mergeClaude(text.value_or("{}"), helper_);
             if (merged) return merged;
             return fail(
                 "Claude Desktop's settings file isn't valid JSON, so it was left as is. Add this "
                 "by hand under \"mcpServers\":\n" +
                 desktopSnippet());
         },
         .cannotBackUp = "Couldn't back up the settings file: ",
         .cannotWrite = "Couldn't write the settings file: "},
        to_.clock);
    if (!edited) return {false, edited.error().message};
    return {true, "Added" + savedAs(*edited)};
}

bool AIConnect::restartClaudeDesktop() const {
    const auto running = runningDesktops();
    const auto application = to_.installed.find(kDesktop);
    if (running.empty() || !application) return false;
    for (const RunningApplication& instance : running) to_.running.terminate(instance);
    const TimePoint deadline = to_.clock.now() + kLongestQuit;
    while (claudeDesktopRunning()) {
        if (to_.clock.now() >= deadline) return false;
        to_.clock.sleepFor(kLookAgain);
    }
    return to_.installed.open(*application).has_value();
}

}  // namespace tandrel
