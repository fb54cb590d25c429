#pragma once

#include <functional>
#include <map>
#include <optional>
#include <stop_token>
#include <string>
#include <vector>

#include "base/clock.h"
#include "base/json.h"

// Waiting for a picture to change and then to stand still, as after a tap.
namespace tandrel {

// All in milliseconds; `since` since 1970.
struct SettleOptions {
    double since = 0;    // changes later than this count
    double min = 250;    // the wait lasts at least this long
    double quiet = 250;  // without a change for this long, a changed picture has settled
    double max = 2500;   // the wait ends here, settled or not
    double first = 900;  // without any change until then, the picture counts as settled

    static constexpr double kLongest = 60'000;

    // From the parameters "since", "min", "quiet", "max" and "first", `since` being now by default.
    // What is missing or not a number keeps its default; lengths are kept within 0 and kLongest and
    // `since` from before 1970 or from the future becomes the nearest time that was.
    static SettleOptions fromQuery(const std::map<std::string, std::string>& query, double now);
};

// The number that a request's parameter `key` holds; none when it is missing or not one.
std::optional<double> numberIn(const std::map<std::string, std::string>& query, const char* key);

struct SettleReply {
    double waited = 0;  // ms that the call took
    double since = 0;   // ms since 1970
    bool settled = false;
    std::size_t changes = 0;            // later than `since`
    std::optional<double> firstChange;  // ms after `since`
    double still = 0;  // ms from the last change, or from `since` without any, to the reply

    // "waited_ms", "since_ms", "settled", "changes", "first_change_ms" (null without a change) and
    // "still_ms"; times in whole milliseconds.
    Json json() const;
};

// The times at which a picture changed later than the one given, oldest first, in milliseconds
// since 1970.
using ChangeTimesSince = std::function<std::vector<double>(double since)>;

// Blocks the caller for at most `options.max` milliseconds by any clock; a stop request ends the
// wait at once, unsettled.
SettleReply waitToSettle(const ChangeTimesSince& source, const SettleOptions& options, Clock& clock,
                         const std::stop_token& stop = {});

}  // namespace tandrel
