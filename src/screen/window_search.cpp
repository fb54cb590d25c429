#include "screen/window_search.h"

#include <algorithm>
#include <array>

#include "base/environment.h"
#include "base/unicode.h"

namespace tandrel {
namespace {

constexpr double kSmallestWindow = 120;       // points
constexpr double kSmallestControlSide = 300;  // points
constexpr std::string_view kReceiverBundle = "com.apple.AirPlayUIAgent";
constexpr std::string_view kControlBundle = "com.apple.controlcenter";
constexpr std::string_view kMirroringOwner = "iPhone Mirroring";
constexpr std::string_view kMirroringBundle = "com.apple.ScreenContinuity";

bool contains(const std::string& text, std::string_view part) {
    return text.find(part) != std::string::npos;
}

// Points for a window that the owner pointed at by an environment variable.
int pointedAt(const std::string& key, const char* variable) {
    const std::string wanted = lowerCased(environment(variable).value_or(""));
    return !wanted.empty() && contains(key, wanted) ? 200 : 0;
}

int ownerPoints(const WinInfo& window, const std::string& ownerKey) {
    if (window.bundle == kReceiverBundle || contains(ownerKey, "airplayuiagent")) return 120;
    if (contains(ownerKey, "airplay")) return 90;
    const bool isLarge =
        window.frame.width >= kSmallestControlSide && window.frame.height >= kSmallestControlSide;
    if (window.bundle != kControlBundle || !isLarge || window.layer > 0) return 0;
    return window.layer == 0 ? 100 : 40;
}

int titlePoints(const std::string& titleKey) {
    constexpr std::array words{"airplay", "iphone", "mirroring"};
    const bool isTelling =
        std::ranges::any_of(words, [&](const char* word) { return contains(titleKey, word); });
    return isTelling ? 20 : 0;
}

double area(const WinInfo& window) { return window.frame.width * window.frame.height; }

}  // namespace

int airplayScore(const WinInfo& window) {
    if (window.frame.width < kSmallestWindow || window.frame.height < kSmallestWindow) return 0;
    const std::string ownerKey = lowerCased(window.owner + " " + window.bundle);
    const std::string titleKey = lowerCased(window.title);
    int score =
        pointedAt(ownerKey, "TANDREL_AIRPLAY_OWNER") + pointedAt(titleKey, "TANDREL_AIRPLAY_TITLE");
    score += ownerPoints(window, ownerKey);
    score += titlePoints(titleKey);
    if (score == 0) return 0;
    if (window.onScreen) score += 15;
    if (window.layer == 0) score += 5;
    return score;
}

Result<std::vector<WinInfo>> airplayCandidates(Windows& windows) {
    std::vector<WinInfo> found = TRY(windows.all());
    for (WinInfo& window : found) window.score = airplayScore(window);
    std::erase_if(found, [](const WinInfo& window) { return window.score <= 0; });
    std::ranges::stable_sort(found, std::greater(), &WinInfo::score);
    return found;
}

Result<std::optional<WinInfo>> windowInfo(Windows& windows, std::uint32_t id) {
    const std::vector<WinInfo> all = TRY(windows.all());
    const auto found = std::ranges::find(all, id, &WinInfo::id);
    if (found == all.end()) return std::nullopt;
    WinInfo window = *found;
    window.score = airplayScore(window);
    return window;
}

Result<WinInfo> pickWindow(Windows& windows, std::optional<std::uint32_t> id) {
    if (id) {
        auto window = TRY(windowInfo(windows, *id));
        if (!window) return std::unexpected(windowIsGone(*id));
        return *std::move(window);
    }
    std::vector<WinInfo> candidates = TRY(airplayCandidates(windows));
    if (candidates.empty()) return fail(kNoMirroringWindow, 503);
    return std::move(candidates.front());
}

Result<std::optional<WinInfo>> findWindow(Windows& windows, std::string_view text) {
    const std::string key = lowerCased(text);
    const auto kind = [&](const WinInfo& window) {
        if (window.owner == kMirroringOwner || window.bundle == kMirroringBundle) return 3;
        if (window.score >= kTrustedScore) return 2;
        const std::string words = lowerCased(window.owner + "\n" + window.title);
        return !key.empty() && contains(words, key) ? 1 : 0;
    };
    std::optional<WinInfo> best;
    for (WinInfo& window : TRY(windows.all())) {
        window.score = airplayScore(window);
        if (!window.onScreen || window.layer != 0 || kind(window) == 0) continue;
        const bool isBetter =
            !best || std::pair(kind(window), area(window)) > std::pair(kind(*best), area(*best));
        if (isBetter) best = std::move(window);
    }
    return best;
}

}  // namespace tandrel
