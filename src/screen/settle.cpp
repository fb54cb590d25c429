#include "screen/settle.h"

#include <algorithm>
#include <charconv>
#include <cmath>

#include "screen/picture_watch.h"

namespace tandrel {
namespace {

constexpr Duration kPollInterval = std::chrono::milliseconds(15);

double milliseconds(Duration duration) { return toSeconds(duration) * 1000; }

// Whether the picture has settled, `elapsed` milliseconds after `since`.
bool hasSettled(const std::vector<double>& changes, double now, double elapsed,
                const SettleOptions& options) {
    if (elapsed < options.min) return false;
    return changes.empty() ? elapsed >= options.first : now - changes.back() >= options.quiet;
}

}  // namespace

std::optional<double> numberIn(const std::map<std::string, std::string>& query, const char* key) {
    const auto entry = query.find(key);
    if (entry == query.end()) return std::nullopt;
    const std::string& text = entry->second;
    double value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (error != std::errc() || end != text.data() + text.size() || std::isnan(value)) {
        return std::nullopt;
    }
    return value;
}

SettleOptions SettleOptions::fromQuery(const std::map<std::string, std::string>& query,
                                       double now) {
    SettleOptions options;
    const auto length = [&](const char* key, double& value) {
        value = std::clamp(numberIn(query, key).value_or(value), 0.0, kLongest);
    };
    options.since = std::clamp(numberIn(query, "since").value_or(now), 0.0, now);
    length("min", options.min);
    length("quiet", options.quiet);
    length("max", options.max);
    length("first", options.first);
    return options;
}

Json SettleReply::json() const {
    return {{"waited_ms", std::llround(waited)},
            {"since_ms", std::llround(since)},
            {"settled", settled},
            {"changes", changes},
            {"first_change_ms", firstChange ? Json(std::llround(*firstChange)) : Json()},
            {"still_ms", std::llround(still)}};
}

// The wall clock says how long ago a change was; it may be set while we wait, so the bound on the
// wait is kept by the clock that only runs forward, too.
SettleReply waitToSettle(const ChangeTimesSince& source, const SettleOptions& options, Clock& clock,
                         const std::stop_token& stop) {
    const TimePoint start = clock.now();
    while (true) {
        const double now = millisecondsSince1970(clock.wallNow());
        const double waited = milliseconds(clock.now() - start);
        const double elapsed = now - options.since;
        const std::vector<double> changes = source(options.since);
        const bool settled = hasSettled(changes, now, elapsed, options);
        if (settled || elapsed >= options.max || waited >= options.max ||
            !clock.sleepFor(kPollInterval, stop)) {
            SettleReply reply{waited, options.since, settled, changes.size(), {}, elapsed};
            if (!changes.empty()) {
                reply.firstChange = changes.front() - options.since;
                reply.still = now - changes.back();
            }
            return reply;
        }
    }
}

}  // namespace tandrel
