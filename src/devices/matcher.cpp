#include "devices/matcher.h"

#include <algorithm>

#include <fmt/format.h>

#include "base/log.h"
#include "devices/pointer_check.h"

namespace tandrel {
namespace {

// Lets the phone draw its pointer and the capture deliver the frame.
constexpr Duration kSettle = std::chrono::milliseconds(600);

using Screens = std::vector<std::shared_ptr<Screen>>;
using Thumbnails = std::vector<std::optional<PointerCheck::Thumbnail>>;

Thumbnails thumbnails(const Screens& screens) {
    Thumbnails result;
    for (const auto& screen : screens) {
        result.push_back(screen->thumbnail(PointerCheck::width, PointerCheck::height));
    }
    return result;
}

// A stored pairing counts when its screen is present and its host connected, and a host drives one
// screen only: the first by order of the screens.
void removeSettled(MatchSituation& situation) {
    const auto isSettled = [&](const std::shared_ptr<Screen>& screen) {
        const auto paired = situation.pairings.find(screen->id());
        if (paired == situation.pairings.end()) return false;
        return std::erase(situation.hosts, paired->second) > 0;
    };
    std::erase_if(situation.screens, isSettled);
}

}  // namespace

Matcher::Matcher(InputFor inputFor, PhoneUse& use, Clock& clock)
    : inputFor_(std::move(inputFor)), use_(use), clock_(clock) {}

MatchOutcome Matcher::run(MatchSituation situation, const MatchOptions& options,
                          std::stop_token stop) {
    if (options.force) {
        for (const auto& screen : situation.screens) situation.pairings.erase(screen->id());
    }
    removeSettled(situation);
    auto& candidates = situation.screens;
    MatchOutcome outcome;
    if (candidates.empty() || situation.hosts.empty()) return outcome;
    if (candidates.size() == 1 && situation.hosts.size() == 1 && !options.alwaysProbe) {
        outcome.made.emplace(candidates.front()->id(), situation.hosts.front());
        return outcome;
    }
    if (!options.mayMove) return outcome;
    for (const Uuid& host : situation.hosts) {
        if (candidates.empty() || stop.stop_requested()) break;
        const auto hold = use_.probe(host, options.patience, stop);
        if (!hold) {
            outcome.busy = true;
            continue;
        }
        if (const auto winner = probe(host, candidates, stop)) {
            const auto screen = candidates.begin() + static_cast<std::ptrdiff_t>(*winner);
            outcome.made.emplace((*screen)->id(), host);
            candidates.erase(screen);
        }
    }
    return outcome;
}

std::optional<std::size_t> Matcher::probe(const Uuid& host, const Screens& candidates,
                                          const std::stop_token& stop) {
    const auto input = inputFor_(host);
    if (!input->move(PointerCheck::a) || !clock_.sleepFor(kSettle, stop)) return std::nullopt;
    const Thumbnails before = thumbnails(candidates);
    if (!input->move(PointerCheck::b) || !clock_.sleepFor(kSettle, stop)) return std::nullopt;
    const Thumbnails after = thumbnails(candidates);

    std::vector<int> scores;
    std::vector<std::size_t> scored;
    std::string line = "probe " + host.text() + ":";
    for (std::size_t i = 0; i < candidates.size(); ++i) {
        if (!before[i] || !after[i]) continue;
        scores.push_back(PointerCheck::score(*before[i], *after[i]));
        scored.push_back(i);
        line += fmt::format(" {}={}", candidates[i]->id(), scores.back());
    }
    log(line);
    const auto winner = clearWinner(scores);
    if (!winner) return std::nullopt;
    return scored[*winner];
}

}  // namespace tandrel
